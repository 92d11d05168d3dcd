#include "support/clock.h"

#include <gtest/gtest.h>

#include <vector>

#include "fakes/fake_clock.h"

namespace marrowbench {
namespace {

using test::fakeClock;

TEST(SecondsFromNow, AddsToTheCurrentTime) {
  std::int64_t out = 0;
  fakeClock().setSeconds(1000);
  for (const std::int64_t seconds : {0, 60, -60}) {
    secondsFromNow(out, seconds);
    EXPECT_EQ(out, 1000 + seconds);
  }
}

TEST(TimeNow, IsZeroUnlessTaken) {
  std::int64_t out = 7;
  fakeClock().setSeconds(5'000'000'000);  // more than 32 bits
  timeNow(out, true);
  EXPECT_EQ(out, 5'000'000'000);
  EXPECT_EQ(currentSeconds(), 5'000'000'000);
  timeNow(out, false);
  EXPECT_EQ(out, 0);
}

TEST(CopyTime, ReturnsItsTarget) {
  std::int64_t out = 0;
  EXPECT_EQ(&copyTime(out, -5), &out);
  EXPECT_EQ(out, -5);
}

TEST(TimePassed, IsStrictlyLater) {
  const struct {
    std::int64_t now;
    bool passed;
  } cases[] = {{1099, false}, {1100, false}, {1101, true}};
  for (const auto& c : cases) {
    fakeClock().setSeconds(c.now);
    EXPECT_EQ(timePassed(1000, 100), c.passed) << c.now;
  }
}

TEST(NowMs, CountsWallClockMilliseconds) {
  std::int64_t out = 0;
  fakeClock().now = 1'700'000'000'123'999;
  nowMs(out);
  EXPECT_EQ(out, 1'700'000'000'123);
}

TEST(ElapsedMs, KeepsOnlyThe31LowBitsOfTheDifference) {
  constexpr std::int64_t kNow = 1'700'000'000'000;
  const struct {
    std::int64_t ago;
    std::int32_t elapsed;
  } cases[] = {{0, 0},
               {1500, 1500},
               {2'147'483'647, 2'147'483'647},
               {2'147'483'648, 0},
               {2'147'483'748, 100},
               {4'294'967'296 + 7, 7},
               {-1, 2'147'483'647},
               {-1000, 2'147'482'648}};
  for (const auto& c : cases) {
    fakeClock().now = kNow * 1000;
    EXPECT_EQ(elapsedMs(kNow - c.ago), c.elapsed) << c.ago;
  }
}

TEST(SleepMs, SleepsInPiecesBelowOneSecond) {
  const struct {
    std::int32_t ms;
    std::vector<std::uint32_t> sleeps;
  } cases[] = {{-5, {}},
               {0, {}},
               {1, {1000}},
               {998, {998'000}},
               {999, {999'000}},
               {1000, {999'000, 1000}},
               {1998, {999'000, 999'000}},
               {2500, {999'000, 999'000, 502'000}}};
  for (const auto& c : cases) {
    fakeClock().sleeps.clear();
    sleepMs(c.ms);
    EXPECT_EQ(fakeClock().sleeps, c.sleeps) << c.ms;
  }
}

}  // namespace
}  // namespace marrowbench
