#include "main/start_minute.h"

#include <gtest/gtest.h>

#include "fakes/fake_clock.h"

namespace marrowbench {
namespace {

using test::fakeClock;

constexpr std::int64_t kNoon = 1'700'049'600;  // 15 November 2023, 12:00:00 UTC

TEST(StartMinuteFor, MovesOnWhenFoundLateInTheMinute) {
  const struct {
    int second;
    int minutesLater;
  } cases[] = {{0, 1}, {44, 1}, {45, 2}, {46, 2}, {59, 2}};
  for (const auto& c : cases) {
    EXPECT_EQ(startMinuteFor(kNoon + c.second), kNoon / 60 + c.minutesLater) << c.second;
  }
}

TEST(ShownWaitSeconds, KeepsAddingTheSecondsAlreadyGone) {
  EXPECT_EQ(shownWaitSeconds(kNoon / 60 + 1, kNoon + 20), 80);
  EXPECT_EQ(shownWaitSeconds(kNoon / 60 + 2, kNoon + 46), 166);
  EXPECT_EQ(shownWaitSeconds(kNoon / 60 + 1, kNoon), 60);
}

TEST(WaitForMinute, ReadsEveryTwoSecondsAndSleepsAfterTheLastReading) {
  fakeClock().setSeconds(kNoon + 57);
  waitForMinute(kNoon / 60 + 1);
  // Looks at :57, :59 and 1 s past the minute; each is followed by 999 + 999 + 2 ms.
  EXPECT_EQ(fakeClock().sleeps.size(), 9U);
  EXPECT_EQ(fakeClock().seconds(), kNoon + 63);
}

TEST(WaitForMinute, KeepsSleepingOnceWhenTheMinuteHasBegun) {
  fakeClock().setSeconds(kNoon);
  waitForMinute(kNoon / 60);
  EXPECT_EQ(fakeClock().seconds(), kNoon + 2);
}

}  // namespace
}  // namespace marrowbench
