#include "marrowctl/run/added_rows.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/run/console_text.h"
#include "marrowctl/table/read_results.h"

namespace marrowbench::ctl {
namespace {

using namespace test;
using marrowbench::test::fakeClock;
using marrowbench::test::TempFolder;
using marrowbench::test::writeFile;

// 14 November 2023, 22:13:20 UTC, the fake clock's time.
constexpr const char* kNow = "Nov 14. 22:13.20";
constexpr const char* kBefore = "Nov 14. 22:13.19";

class AddedRowsTest : public testing::Test {
 protected:
  AddedRowsTest() : added("c1", fakeClock().seconds()) {}

  [[nodiscard]] std::string path(const std::string& name) const {
    return folder.path() + "/" + name;
  }

  // The plan of a test whose table is called so, for three iterations.
  Plan plan(const std::string& table) const {
    writeFile(folder.file("a.bst"),
              "posix;0;0;0;64;0;1024;3;0;MEMORY;" + path("one.bin") + ";;" + path(table) + "\n");
    std::istringstream none;
    return makePlan({{path("a.bst")}, {"c1"}, 0}, none);
  }

  void append(const std::string& table, const std::string& text) const {
    std::ofstream(path(table), std::ios::app) << text;
  }

  // A row that took so long, as the program appends it.
  [[nodiscard]] std::string row(std::int64_t ms, const std::string& date = kNow) const {
    return date + ",Posix,Write,,,0,65536,64,0,1024,3,0,MEMORY,," + path("one.bin") + ",,,," +
           std::to_string(ms) + "," + std::to_string(1024000 / ms) + ",100,,,,,,,,,,,,,\n\n";
  }

  // The milliseconds of the rows that the run with this console added, and what can't be used.
  std::vector<std::int64_t> addedRows(const Plan& plan, const std::string& printed) {
    ConsoleFollower console;
    console.take(asked(path("a.bst")) + kFound + opening(path("a.bst"), 0) + printed);
    OwnRows own(plan, console, "c1");
    ReadOptions reading;
    reading.tables = added.grownTables(plan);
    reading.choice = added.choice(own);
    reading.onlyHost = "c1";
    reading.allRuns = true;
    const ReadOutcome read = readResults(reading);
    std::vector<std::int64_t> found;
    for (RowCursor rows(read.set); rows.next();) found.push_back(rows.row().milliseconds);
    unusable = read.set.unusable.size();
    hosts = read.set.hosts;
    return found;
  }

  static std::string ran(int hundredths) {
    const std::string digits = std::to_string(hundredths);
    return iteration(summary("0." + std::string(2 - digits.size(), '0') + digits + "s",
                             std::to_string(100.0 / hundredths)));
  }

  using Rows = std::vector<std::int64_t>;

  TempFolder folder;
  AddedRows added;
  std::size_t unusable = 0;
  std::vector<std::string> hosts;
};

TEST_F(AddedRowsTest, AreThoseBehindTheOldEnd) {
  const Plan plan = AddedRowsTest::plan("t.csv");
  append("t.csv", row(100) + row(200));
  added.remember(plan);
  EXPECT_EQ(added.grownTables(plan), std::vector<std::string>());
  append("t.csv", row(100) + row(300));
  EXPECT_EQ(added.grownTables(plan), std::vector<std::string>{path("t.csv")});
  EXPECT_EQ(addedRows(plan, ran(10) + ran(30)), (Rows{100, 300}));
  EXPECT_EQ(hosts, std::vector<std::string>{"c1"});
}

TEST_F(AddedRowsTest, AreNotThoseThatOthersAppend) {
  const Plan plan = AddedRowsTest::plan("t.csv");
  added.remember(plan);
  append("t.csv", row(500) + row(100) + row(600) + row(300) + row(100));
  EXPECT_EQ(addedRows(plan, ran(10) + ran(30)), (Rows{100, 300}));
}

TEST_F(AddedRowsTest, AreAllThoseOfATableThatWasNotThere) {
  const Plan plan = AddedRowsTest::plan("t.csv");
  added.remember(plan);
  append("t.csv", row(100, kBefore) + "torn\n");
  EXPECT_EQ(addedRows(plan, ran(10)), Rows{100});
  EXPECT_EQ(unusable, 1U);
}

TEST_F(AddedRowsTest, AreAllThoseOfATableThatTookTheOldOnesPlace) {
  const Plan plan = AddedRowsTest::plan("t.csv");
  append("t.csv", row(100));
  added.remember(plan);
  // Made first, so that it is another file.
  append("new.csv", row(300) + row(100) + row(300));
  std::filesystem::rename(path("new.csv"), path("t.csv"));
  EXPECT_EQ(addedRows(plan, ran(30)), Rows{300});
  writeFile(folder.file("t.csv"), row(300));
  EXPECT_EQ(addedRows(plan, ran(30)), Rows{300}) << "emptied";
}

TEST_F(AddedRowsTest, AreInATableOfEachIterationAndDate) {
  const Plan plan = AddedRowsTest::plan("t_[host]_[iter]_[date].csv");
  append("t_c1_0_1114_22130.csv", row(100));
  append("t_c2_0_1114_22130.csv", row(100));
  added.remember(plan);
  append("t_c1_0_1114_22130.csv", row(100));
  append("t_c1_1_1114_22131.csv", row(300));
  append("t_c2_1_1114_22131.csv", row(300));
  EXPECT_EQ(added.grownTables(plan), (std::vector<std::string>{path("t_c1_0_1114_22130.csv"),
                                                               path("t_c1_1_1114_22131.csv")}));
  EXPECT_EQ(addedRows(plan, ran(10) + ran(30)), (Rows{100, 300}));
}

TEST_F(AddedRowsTest, AreInATableWhosePathLooksLikeAPattern) {
  const Plan plan = AddedRowsTest::plan("t*?.csv");
  append("tab.csv", row(100));
  added.remember(plan);
  append("tab.csv", row(100));
  append("t*?.csv", row(100));
  EXPECT_EQ(added.grownTables(plan), std::vector<std::string>{path("t*?.csv")});
}

TEST_F(AddedRowsTest, AreTheLaterOnesOfATableThatWasNotKnown) {
  // The settings file came only when the run had begun.
  const Plan plan = AddedRowsTest::plan("t.csv");
  append("t.csv", row(100, kBefore) + "torn\n" + row(100));
  EXPECT_EQ(addedRows(plan, ran(10)), Rows{100});
  EXPECT_EQ(unusable, 0U) << "it may be older";
  AddedRows late("c1", fakeClock().seconds() + 1);
  std::swap(added, late);
  EXPECT_EQ(addedRows(plan, ran(10)), Rows{});
}

TEST_F(AddedRowsTest, MayBeginBehindATornLine) {
  const Plan plan = AddedRowsTest::plan("t.csv");
  append("t.csv", row(100) + "Nov 14. 22:1");
  added.remember(plan);
  append("t.csv", row(100) + row(300));
  EXPECT_EQ(addedRows(plan, ran(10) + ran(30)), Rows{300});
  EXPECT_EQ(unusable, 1U) << "the line that holds a new row";
}

}  // namespace
}  // namespace marrowbench::ctl
