#include "marrowctl/run/run_progress.h"

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

// 14 November 2023, 22:13:20 UTC.
constexpr std::int64_t kNow = 1'700'000'000'000;

class RunProgressTest : public testing::Test {
 protected:
  static Plan plan() {
    std::istringstream none;
    return makePlan({{"a.bst"}, {"c1"}, 0}, none);
  }

  static RunProgress progress() {
    const Plan made = plan();
    return {made, totalsOf(made)};
  }

  // What is shown when the text is there for so long.
  std::string after(RunProgress& progress, const std::string& text, std::int64_t ms) {
    console.take(text);
    progress.note(console, kNow + ms);
    return progress.text(kNow + ms);
  }

  WorkingFolder folder;
  ConsoleFollower console;
};

constexpr const char* kTwoTests =
    "posix;0;0;0;64;0;1024;2;0;MEMORY;/d/[iter];;/d/t.csv\n"
    "ansic;0;0;0;64;0;1024;3;0;MEMORY;/d/[iter];;/d/t.csv\n";

TEST_F(RunProgressTest, TellsTestIterationLastRowAndTimeLeft) {
  writeFile("a.bst", kTwoTests);
  RunProgress progress = RunProgressTest::progress();
  EXPECT_EQ(after(progress, "", 0), "");
  EXPECT_EQ(after(progress, asked("a.bst") + kFound + opening("a.bst", 0), 0),
            "test 1 of 2, iteration 1 of 2 (Posix write)");
  EXPECT_EQ(after(progress, iteration(summary("2.00s", "0.512")), 4000),
            "test 1 of 2, iteration 2 of 2, last row 0.5 MiB/s, 16 s left (Posix write)");
  EXPECT_EQ(after(progress, "", 6000),
            "test 1 of 2, iteration 2 of 2, last row 0.5 MiB/s, 14 s left (Posix write)");
  EXPECT_EQ(after(progress, iteration("ERROR: none") + kTestEnd + opening("a.bst", 1), 8000),
            "test 2 of 2, iteration 1 of 3, last row an error, 12 s left (AnsiC write)");
}

TEST_F(RunProgressTest, SharesOutWhatItSeesAtOnce) {
  // 1 s and 3 s of data and 2 s of all else: 2 s and 4 s.
  writeFile("a.bst", kTwoTests);
  RunProgress progress = RunProgressTest::progress();
  (void)after(progress, asked("a.bst") + kFound + opening("a.bst", 0), 0);
  EXPECT_EQ(after(progress,
                  iteration(summary("1.00s", "1.000")) + iteration(summary("3.00s", "1.000")) +
                      kTestEnd + opening("a.bst", 1) + iteration(summary("0.00s", "1.000")),
                  6000),
            "test 2 of 2, iteration 2 of 3, last row 1.0 MiB/s, 1 s left (AnsiC write)")
      << "2 s over three iterations";
}

TEST_F(RunProgressTest, DoesNotCountAWaitAsWork) {
  writeFile("a.bst", kTwoTests);
  RunProgress progress = RunProgressTest::progress();
  (void)after(progress, asked("a.bst") + ".", 0);
  (void)after(progress, foundLate(80), 30000);
  (void)after(progress, opening("a.bst", 0), 70000);
  EXPECT_EQ(after(progress, iteration(summary("1.00s", "1.000")), 71000),
            "test 1 of 2, iteration 2 of 2, last row 1.0 MiB/s, 4 s left (Posix write)");
}

TEST_F(RunProgressTest, ShowsNoSpeedOfARowWithoutTime) {
  writeFile("a.bst", kTwoTests);
  RunProgress progress = RunProgressTest::progress();
  EXPECT_EQ(
      after(progress,
            asked("a.bst") + kFound + opening("a.bst", 0) + iteration(summary("0.00s", "0.000")),
            0),
      "test 1 of 2, iteration 2 of 2, last row in no time, 0 s left (Posix write)");
}

TEST_F(RunProgressTest, CountsOnlyWhatTookTimeSinceTheLastLook) {
  // 4 s of data; of all else at the first look nothing is known, at the later one it is 1 s.
  const std::string begun = kFound + opening("a.bst", 0) + iteration(summary("4.00s", "1.000"));
  writeFile("a.bst", kTwoTests);
  RunProgress firstLook = progress();
  EXPECT_EQ(after(firstLook, asked("a.bst") + begun, 60000),
            "test 1 of 2, iteration 2 of 2, last row 1.0 MiB/s, 16 s left (Posix write)");

  console = {};
  RunProgress laterLook = progress();
  (void)after(laterLook, asked("a.bst"), 0);
  (void)after(laterLook, ".", 60000);
  EXPECT_EQ(after(laterLook, begun, 65000),
            "test 1 of 2, iteration 2 of 2, last row 1.0 MiB/s, 20 s left (Posix write)");
}

TEST_F(RunProgressTest, CountsDownToTheTrueMinute) {
  writeFile("a.bst", kTwoTests);
  RunProgress progress = RunProgressTest::progress();
  EXPECT_EQ(after(progress, asked("a.bst"), 0), "") << "it may be there";
  EXPECT_EQ(after(progress, ".", 1000), "waiting for a.bst for 1 s, next look in 5 s");
  EXPECT_EQ(after(progress, "", 4000), "waiting for a.bst for 4 s, next look in 2 s");
  EXPECT_EQ(after(progress, ".", 6000), "waiting for a.bst for 6 s, next look in 5 s");
  // At second 28 the program shows 60 + 28.
  EXPECT_EQ(after(progress, foundLate(88), 8000), "a.bst: waiting for the full minute, 32 s");
  EXPECT_EQ(after(progress, "", 39000), "a.bst: waiting for the full minute, 1 s");
  EXPECT_EQ(after(progress, "", 40000), "a.bst: the first test begins within 4 s");
}

TEST_F(RunProgressTest, KnowsTheTestsOfAChain) {
  writeFile("a.bst", std::string(kTwoTests) + "b.bst\n");
  writeFile("b.bst", kTwoTests);
  RunProgress progress = RunProgressTest::progress();
  EXPECT_EQ(after(progress, asked("b.bst") + kFound + opening("b.bst", 0), 0),
            "test 3 of 4, iteration 1 of 2 (Posix write)");
}

TEST_F(RunProgressTest, SaysThatMoreMayCome) {
  // A file that is not there yet, and a circle.
  for (const char* chain : {"missing.bst\n", "a.bst\n"}) {
    writeFile("a.bst", std::string(kTwoTests) + chain);
    RunProgress progress = RunProgressTest::progress();
    console = {};
    (void)after(progress, asked("a.bst") + kFound + opening("a.bst", 0), 0);
    EXPECT_EQ(after(progress, iteration(summary("1.00s", "1.000")), 1000),
              "test 1 of at least 2, iteration 2 of 2, last row 1.0 MiB/s (Posix write)")
        << chain;
  }
}

TEST_F(RunProgressTest, RemembersWhatItSawWhenAFileComes) {
  writeFile("a.bst", "posix;0;0;0;64;0;1024;2;0;MEMORY;/d/[iter];;/d/t.csv\nb.bst\n");
  RunProgress progress = RunProgressTest::progress();
  (void)after(progress, asked("a.bst") + kFound + opening("a.bst", 0), 0);
  (void)after(progress, iteration(summary("1.00s", "1.000")), 1000);
  (void)after(progress, iteration(summary("1.00s", "1.000")) + kTestEnd, 2000);
  (void)after(progress, asked("b.bst") + ".", 3000);
  writeFile("b.bst", "posix;0;0;0;64;0;1024;5;0;MEMORY;/d/[iter];;/d/t.csv\n");
  const Plan more = plan();
  progress.setPlan(more, totalsOf(more));
  (void)after(progress, foundLate(88), 8000);
  EXPECT_EQ(after(progress, opening("b.bst", 0), 40000),
            "test 2 of 2, iteration 1 of 5, last row 1.0 MiB/s, 5 s left (Posix write)");
}

TEST_F(RunProgressTest, GoesOnWithoutThePlan) {
  writeFile("a.bst", kTwoTests);
  RunProgress progress = RunProgressTest::progress();
  EXPECT_EQ(after(progress, asked("other.bst") + kFound + opening("other.bst", 0), 0),
            "test 1 of other.bst, iteration 1");
}

}  // namespace
}  // namespace marrowbench::ctl
