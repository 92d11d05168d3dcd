#include "marrowctl/run/own_rows.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "helpers/temp_folder.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/run/console_text.h"

namespace marrowbench::ctl {
namespace {

using namespace test;
using marrowbench::test::WorkingFolder;
using marrowbench::test::writeFile;

constexpr const char* kParameters = "Posix,Write,,,0,65536,64,0,1024,3,0";

// A row of an iteration that took 1,250 ms and wrote 51.2 MiB/s, unless it says otherwise.
struct Row {
  std::string dest;
  std::int64_t milliseconds = 1250;
  std::int64_t kibPerSecond = 52429;
  std::string error{};
  std::string parameters = kParameters;

  [[nodiscard]] RowCells cells() const {
    RowCells cells;
    cells.parameters = parameters;
    cells.source = "MEMORY";
    cells.dest = dest;
    cells.error = error;
    cells.milliseconds = milliseconds;
    cells.kibPerSecond = kibPerSecond;
    return cells;
  }
};

class OwnRowsTest : public testing::Test {
 protected:
  // Of a run on "c1" with this console, behind the opening of the first test.
  OwnRows rowsOf(const std::string& line, const std::string& printed) {
    writeFile("a.bst", line);
    std::istringstream none;
    console.take(asked("a.bst") + kFound + opening("a.bst", 0) + printed);
    return {makePlan({{"a.bst"}, {"c1"}, 0}, none), console, "c1"};
  }

  static std::string fast() { return iteration(summary("1.25s", "51.200")); }

  WorkingFolder folder;
  ConsoleFollower console;
};

constexpr const char* kPerHost =
    "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/[host]_[iter].bin;;/d/t.csv\n";
constexpr const char* kOneFile = "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/one.bin;;/d/t.csv\n";

TEST_F(OwnRowsTest, TakesEachRowOnce) {
  OwnRows rows = rowsOf(kPerHost, fast() + fast());
  EXPECT_EQ(rows.expected(), 2U);
  EXPECT_TRUE(rows.take(Row{"/d/c1_0.bin"}.cells()));
  EXPECT_FALSE(rows.take(Row{"/d/c1_0.bin"}.cells())) << "of an earlier run";
  EXPECT_TRUE(rows.take(Row{"/d/c1_1.bin"}.cells()));
  EXPECT_FALSE(rows.take(Row{"/d/c1_2.bin"}.cells())) << "the console has only two";
  EXPECT_EQ(rows.found(), 2U);
}

TEST_F(OwnRowsTest, LeavesRowsOfOtherClients) {
  OwnRows rows = rowsOf(kPerHost, fast());
  for (const char* dest :
       {"/d/c2_0.bin", "/d/c11_0.bin", "/d/1_0.bin", "/e/c1_0.bin", "/d/c1_1.bin"})
    EXPECT_FALSE(rows.take(Row{dest}.cells())) << dest;
  EXPECT_TRUE(rows.take(Row{"/d/c1_0.bin"}.cells()));
}

TEST_F(OwnRowsTest, TellsByFiguresWhatPathsDoNotTell) {
  const struct {
    Row row;
    bool isOwn;
  } cases[] = {{{"/d/one.bin"}, true},
               {{"/d/one.bin", 1259, 52429}, true},
               {{"/d/one.bin", 1249, 52429}, false},
               {{"/d/one.bin", 1260, 52429}, false},
               {{"/d/one.bin", 1250, 52428}, true},
               {{"/d/one.bin", 1250, 52432}, false},
               {{"/d/one.bin", 1250, 52429, "ERROR: none"}, false}};
  for (const auto& c : cases) {
    console = {};
    OwnRows rows = rowsOf(kOneFile, fast());
    EXPECT_EQ(rows.take(c.row.cells()), c.isOwn) << c.row.milliseconds << ' ' << c.row.kibPerSecond;
  }
}

TEST_F(OwnRowsTest, TellsRowsWithoutTimeOrWithAnError) {
  constexpr std::int64_t kNoSpeed = INT64_MIN;
  OwnRows rows = rowsOf(kOneFile, iteration(summary("0.00s", "0.000")) +
                                      iteration("ERROR: Unable to open file '/d/one.bin'"));
  EXPECT_FALSE(rows.take(Row{"/d/one.bin", 9, 52429}.cells()));
  EXPECT_TRUE(rows.take(Row{"/d/one.bin", 0, kNoSpeed}.cells()));
  EXPECT_FALSE(rows.take(Row{"/d/one.bin", 0, kNoSpeed, "ERROR: another one"}.cells()));
  // The console cuts what is long.
  EXPECT_TRUE(
      rows.take(Row{"/d/one.bin", 0, kNoSpeed, "ERROR: Unable to open file '/d/one.bin' ! No space"}
                    .cells()));
}

TEST_F(OwnRowsTest, TellsTestsApartByTheirParameters) {
  OwnRows rows = rowsOf(kOneFile, fast());
  for (const char* other :
       {"AnsiC,Write,,,0,65536,64,0,1024,3,0", "Posix,Write,flush,,0,65536,64,0,1024,3,0",
        "Posix,Write,,,0,65536,64,0,1024,4,0", "nothing"}) {
    Row row{"/d/one.bin"};
    row.parameters = other;
    EXPECT_FALSE(rows.take(row.cells())) << other;
  }
  EXPECT_TRUE(rows.take(Row{"/d/one.bin"}.cells()));
}

TEST_F(OwnRowsTest, GoesOnBehindALostRow) {
  OwnRows rows = rowsOf(kPerHost, fast() + "marrowbench: row lost: /d/t.csv: full\n" + fast());
  EXPECT_EQ(rows.expected(), 1U);
  EXPECT_FALSE(rows.take(Row{"/d/c1_0.bin"}.cells()));
  EXPECT_TRUE(rows.take(Row{"/d/c1_1.bin"}.cells()));
}

TEST_F(OwnRowsTest, ExpectsNoRowWithoutATable) {
  OwnRows rows = rowsOf("posix;0;0;0;64;0;1024;3;0;MEMORY;/d/one.bin;log.txt; ;\n", fast());
  EXPECT_EQ(rows.expected(), 0U);
  EXPECT_FALSE(rows.take(Row{"/d/one.bin"}.cells()));
}

TEST_F(OwnRowsTest, TakesAnyDate) {
  OwnRows rows =
      rowsOf("posix;0;0;0;64;0;1024;3;0;MEMORY;/d/[host][iter]_[date].bin;;/d/t.csv\n", fast());
  EXPECT_FALSE(rows.take(Row{"/d/c11_1116_02212.bin"}.cells())) << "c1, iteration 1; or c11";
  EXPECT_FALSE(rows.take(Row{"/d/c10_1116.bin"}.cells()));
  EXPECT_TRUE(rows.take(Row{"/d/c10_1116_02212.bin"}.cells()));
}

TEST_F(OwnRowsTest, TellsPassesOfACircleApart) {
  OwnRows rows = rowsOf(std::string(kOneFile) + "a.bst\n",
                        fast() + kTestEnd + asked("a.bst") + kFound + opening("a.bst", 0) +
                            iteration(summary("2.50s", "25.600")));
  EXPECT_EQ(rows.expected(), 2U);
  EXPECT_TRUE(rows.take(Row{"/d/one.bin"}.cells()));
  EXPECT_TRUE(rows.take(Row{"/d/one.bin", 2500, 26214}.cells()));
}

}  // namespace
}  // namespace marrowbench::ctl
