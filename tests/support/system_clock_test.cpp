#include "support/system_clock.h"

#include <gtest/gtest.h>

#include <ctime>

namespace marrowbench {
namespace {

TEST(SystemClock, SecondsAreThoseOfTheSystem) {
  const std::int64_t before = std::time(nullptr);
  const std::int64_t now = systemSeconds();
  EXPECT_LE(before, now);
  EXPECT_LE(now, std::time(nullptr));
}

TEST(SystemClock, MillisecondsAreThoseOfTheSameClock) {
  const std::int64_t before = systemSeconds();
  const std::int64_t now = systemMilliseconds();
  // time() may lag behind gettimeofday() by a tick of the kernel, never by a second.
  EXPECT_LE(before * 1000, now);
  EXPECT_LE(now, (systemSeconds() + 2) * 1000);
}

TEST(SystemClock, SleepLastsAtLeastAsLongAsAsked) {
  timespec start{};
  timespec end{};
  ASSERT_EQ(clock_gettime(CLOCK_MONOTONIC, &start), 0);
  systemSleep(20'000);
  ASSERT_EQ(clock_gettime(CLOCK_MONOTONIC, &end), 0);
  const auto elapsed = (end.tv_sec - start.tv_sec) * 1'000'000'000L + end.tv_nsec - start.tv_nsec;
  EXPECT_GE(elapsed, 20'000'000);
}

}  // namespace
}  // namespace marrowbench
