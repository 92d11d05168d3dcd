#include "marrowctl/fleet/start_window.h"

#include <gtest/gtest.h>

#include "main/start_minute.h"

namespace marrowbench::ctl {
namespace {

// A full minute.
constexpr std::int64_t kNoon = 1'700'000'040'000;
constexpr std::int64_t kMinute = 60'000;

TEST(BestMoment, IsTheNextSecond46) {
  const struct {
    std::int64_t now, moment;
  } cases[] = {{0, 46'000},       {45'999, 46'000},  {46'000, 46'000},
               {46'001, 106'000}, {59'999, 106'000}, {60'000, 106'000}};
  for (const auto& c : cases)
    EXPECT_EQ(bestMoment(kNoon + c.now, {0, 0}), kNoon + c.moment) << c.now;
}

TEST(BestMoment, IsThatOfTheSlowestClock) {
  // A clock that is 10 s behind the share's shows second 46 ten seconds later.
  EXPECT_EQ(bestMoment(kNoon, {-10'000, 0}), kNoon + 56'000);
  EXPECT_EQ(bestMoment(kNoon, {20'000, 21'000}), kNoon + 26'000);
  EXPECT_EQ(bestMoment(kNoon, {-100'000, -100'000}), kNoon + 26'000);
}

TEST(WindowFrom, IsWidestAtTheBestMoment) {
  const StartWindow best = windowFrom(bestMoment(kNoon, {0, 0}), {0, 0});
  EXPECT_EQ(best.lengthMs, 59'000);
  EXPECT_EQ(best.startMs, kNoon + 2 * kMinute);
  for (std::int64_t at = 0; at < kMinute; at += 500) {
    EXPECT_LE(windowFrom(kNoon + at, {0, 0}).lengthMs, 60'000) << at;
  }
}

TEST(WindowFrom, ShrinksByWhatClocksDiffer) {
  const ClockSpan clocks{0, 900};
  EXPECT_EQ(windowFrom(bestMoment(kNoon, clocks), clocks).lengthMs, 58'100);
}

TEST(WindowFrom, IsEmptyWhereOneClockHasPassedTheBorder) {
  // The slower one shows second 44.5, the faster one 45.5.
  EXPECT_EQ(windowFrom(kNoon + 44'500, {0, 1'000}).lengthMs, 0);
}

// All clients that find the file in the window, by whichever clock, start in the minute that is
// told: by the program's own rule.
TEST(WindowFrom, HoldsByTheProgramsRule) {
  for (const ClockSpan clocks :
       {ClockSpan{0, 0}, ClockSpan{-700, 300}, ClockSpan{30'000, 30'900}}) {
    for (std::int64_t at = 0; at < kMinute; at += 250) {
      const std::int64_t share = kNoon + at;
      const StartWindow window = windowFrom(share, clocks);
      if (window.lengthMs == 0) continue;
      for (const std::int64_t found : {share, share + window.lengthMs - 1}) {
        for (const std::int64_t offset : {clocks.slowestMs, clocks.fastestMs}) {
          EXPECT_EQ(startMinuteFor((found + offset) / 1000) * kMinute, window.startMs)
              << at << " " << offset;
        }
      }
      const std::int64_t late = share + window.lengthMs;
      EXPECT_GT(startMinuteFor((late + clocks.fastestMs) / 1000) * kMinute, window.startMs) << at;
    }
  }
}

}  // namespace
}  // namespace marrowbench::ctl
