#include "marrowctl/run/console_follower.h"

#include <gtest/gtest.h>

#include <string>

#include "marrowctl/run/console_text.h"

namespace marrowbench::ctl {
namespace {

using namespace test;

const std::string kBanner = "------\nMarrowbench  9.1.01\nCopyright (c)\n------\n";

ConsoleFollower after(const std::string& text) {
  ConsoleFollower console;
  console.take(text);
  return console;
}

TEST(ConsoleFollower, FollowsAFileFromItsSearchToItsTests) {
  ConsoleFollower console = after(kBanner);
  EXPECT_EQ(console.phase(), RunPhase::starting);
  console.take(asked("/x/a.bst"));
  EXPECT_EQ(console.phase(), RunPhase::waitingForFile);
  EXPECT_EQ(console.files(), std::vector<std::string>{"/x/a.bst"});
  EXPECT_EQ(console.looks(), 0);
  console.take(".");
  console.take("..");
  EXPECT_EQ(console.looks(), 3);
  console.take(foundLate(97));
  EXPECT_EQ(console.phase(), RunPhase::waitingForMinute);
  EXPECT_EQ(console.shownWait(), 97);
  EXPECT_EQ(console.configIndex(), -1);
  console.take(opening("/x/a.bst", 0));
  EXPECT_EQ(console.phase(), RunPhase::testing);
  EXPECT_EQ(console.configIndex(), 0);
  EXPECT_EQ(console.iterationsDone(), 0);
}

TEST(ConsoleFollower, TakesWhatWasThereWithoutAWait) {
  const ConsoleFollower console = after(asked("a.bst") + kFound);
  EXPECT_EQ(console.phase(), RunPhase::testing);
  EXPECT_EQ(console.configIndex(), -1);
}

TEST(ConsoleFollower, CountsTestsAndIterations) {
  const ConsoleFollower console =
      after(asked("a.bst") + kFound + opening("a.bst", 0) + iteration(summary("1.25s", "51.200")) +
            iteration(summary("2.05m.s", "0.512")) + kTestEnd + opening("a.bst", 1) +
            iteration("ERROR: No such file"));
  EXPECT_EQ(console.configIndex(), 1);
  EXPECT_EQ(console.iterationsDone(), 1);
  ASSERT_EQ(console.iterations().size(), 3U);
  const RunIteration& first = console.iterations()[0];
  EXPECT_EQ(first.configIndex, 0);
  EXPECT_EQ(first.iteration, 0);
  EXPECT_EQ(first.time, shownTime(1259));
  EXPECT_DOUBLE_EQ(first.mibPerSecond, 51.2);
  EXPECT_EQ(first.error, "");
  const RunIteration& second = console.iterations()[1];
  EXPECT_EQ(second.iteration, 1);
  EXPECT_EQ(second.time, shownTime(125999));
  const RunIteration& third = console.iterations()[2];
  EXPECT_EQ(third.configIndex, 1);
  EXPECT_EQ(third.iteration, 0);
  EXPECT_EQ(third.error, "ERROR: No such file");
}

TEST(ConsoleFollower, FollowsAChainAndCountsAnew) {
  const ConsoleFollower console =
      after(asked("a.bst") + kFound + opening("a.bst", 0) + iteration(summary("0.01s", "1.000")) +
            kTestEnd + asked("b.bst") + kFound + opening("b.bst", 0) +
            iteration(summary("0.02s", "2.000")));
  EXPECT_EQ(console.files(), (std::vector<std::string>{"a.bst", "b.bst"}));
  EXPECT_EQ(console.configIndex(), 0);
  ASSERT_EQ(console.iterations().size(), 2U);
  EXPECT_EQ(console.iterations()[0].file, 0U);
  EXPECT_EQ(console.iterations()[1].file, 1U);
}

TEST(ConsoleFollower, TakesPiecesOfAnyLength) {
  const std::string text = kBanner + asked("a.bst") + ".." + foundLate(70) + opening("a.bst", 0) +
                           iteration(summary("1.25s", "51.200")) + "marrowbench: row lost: x: y\n";
  ConsoleFollower console;
  for (const char c : text) console.take(std::string(1, c));
  EXPECT_EQ(console.configIndex(), 0);
  ASSERT_EQ(console.iterations().size(), 1U);
  EXPECT_DOUBLE_EQ(console.iterations()[0].mibPerSecond, 51.2);
  EXPECT_TRUE(console.iterations()[0].rowLost);
  console.take(iteration(summary("1.25s", "51.200")) + "marrowbench: row lost: x: z\n");
  EXPECT_EQ(console.rowsLost(), 2);
  EXPECT_EQ(console.firstLoss(), "x: y");
}

TEST(ConsoleFollower, IsNotDeceivedByALineOfTheSettingsFile) {
  for (const std::string& line :
       {std::string("Null data test: Ok"), std::string("___   a.bst  __  7  ___"),
        summary("1.00s", "1.000")}) {
    const ConsoleFollower console = after(asked("a.bst") + kFound + opening("a.bst", 0, line) +
                                          iteration(summary("0.01s", "1.000")));
    EXPECT_EQ(console.configIndex(), 0) << line;
    EXPECT_EQ(console.iterations().size(), 1U) << line;
  }
}

TEST(ConsoleFollower, ReadsRowsBehindTheMessageOfAMissingLogFolder) {
  std::string text = opening("a.bst", 0) + iteration(summary("1.25s", "51.200"));
  const std::string message = "ERROR: Folder does not exists: /x/y.";
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    text.insert(at, message);
  }
  const ConsoleFollower console = after(asked("a.bst") + kFound + text);
  EXPECT_EQ(console.configIndex(), 0);
  ASSERT_EQ(console.iterations().size(), 1U);
  EXPECT_DOUBLE_EQ(console.iterations()[0].mibPerSecond, 51.2);
}

TEST(ConsoleFollower, TakesAnErrorThatIsDatedForItsUnderscores) {
  // A row whose text holds "___" has a date in front.
  ConsoleFollower console =
      after(asked("a.bst") + kFound + opening("a.bst", 0) + kDate + "ERROR: no a___b.bin\n");
  console.take(kMargin + "Null data test: N/A\n");
  EXPECT_EQ(console.configIndex(), 0);
  ASSERT_EQ(console.iterations().size(), 1U);
  EXPECT_EQ(console.iterations()[0].error, "ERROR: no a___b.bin");
}

TEST(ConsoleFollower, PassesOverTestsThatEndAtOnce) {
  const ConsoleFollower console = after(asked("a.bst") + kFound + opening("a.bst", 0) + kMargin +
                                        "ERROR: Folder does not exists: /x/y\n" +
                                        opening("a.bst", 1) + iteration(summary("0.01s", "1.000")));
  EXPECT_EQ(console.configIndex(), 1);
  ASSERT_EQ(console.iterations().size(), 1U);
  EXPECT_EQ(console.iterations()[0].configIndex, 1);
}

TEST(ShownTime, IsTheSameForWhatLooksTheSame) {
  const struct {
    std::int64_t a, b;
    bool isSame;
  } cases[] = {{0, 9, true},          {9, 10, false},        {59990, 59999, true},
               {60000, 60000, true},  {60000, 60001, false}, {60001, 60999, true},
               {60999, 61000, false}, {100, 60100, false},   {3600000, 3600999, true}};
  for (const auto& c : cases)
    EXPECT_EQ(shownTime(c.a) == shownTime(c.b), c.isSame) << c.a << ' ' << c.b;
  for (const std::int64_t ms : {0, 10, 59990, 60000, 61000, 3661000})
    EXPECT_EQ(millisecondsOf(shownTime(ms)), ms);
}

}  // namespace
}  // namespace marrowbench::ctl
