#include "marrowctl/fleet/share_clock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <filesystem>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"
#include "marrowctl/fleet/pace.h"

namespace marrowbench::ctl {
namespace {

TEST(ShareClock, IsThatOfTheFilesThere) {
  const test::TempFolder folder;
  ClockReading reading;
  const std::time_t before = time(nullptr);
  ASSERT_EQ(readShareClock(folder.path(), reading), 0);
  EXPECT_GE(reading.shareMs, (before - 1) * 1000);
  EXPECT_LE(reading.shareMs, (time(nullptr) + 1) * 1000);
  EXPECT_EQ(reading.localMs, test::fakeClock().now / 1000);
  EXPECT_EQ(reading.offsetMs(), reading.localMs - reading.shareMs);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "nothing stays behind";
}

TEST(ShareClock, TakesTheMiddleOfTheWriting) {
  const test::TempFolder folder;
  test::fakeClock().msPerReading = 500;
  const std::int64_t start = test::fakeClock().now / 1000;
  ClockReading reading;
  ASSERT_EQ(writeAndReadClock(std::string(folder.file("f").view()), "text", reading), 0);
  EXPECT_EQ(reading.localMs, start + 250);
}

TEST(ShareClock, IsReadAgainWhereThatTookLong) {
  const test::TempFolder folder;
  const struct { std::int64_t ms, readings; } cases[] = {{200, 1}, {201, 3}, {5000, 3}};
  for (const auto& c : cases) {
    test::fakeClock().msPerReading = c.ms;
    const std::int64_t start = test::fakeClock().now / 1000;
    ClockReading reading;
    ASSERT_EQ(writeAndReadClock(std::string(folder.file("f").view()), "text", reading), 0);
    EXPECT_EQ(test::fakeClock().now / 1000 - start, c.readings * 2 * c.ms) << c.ms;
    EXPECT_EQ(reading.localMs, start + c.ms / 2) << "the first of those that took as long";
  }
}

TEST(ShareClock, WritesOverTheFrontOfAFile) {
  const test::TempFolder folder;
  test::writeFile(folder.file("f"), "0123456789");
  ClockReading reading;
  ASSERT_EQ(writeAndReadClock(std::string(folder.file("f").view()), "abc", reading), 0);
  EXPECT_EQ(test::readFile(folder.file("f")), "abc3456789");
}

TEST(ShareClock, TellsWhyItCannotBeRead) {
  ClockReading reading;
  EXPECT_EQ(readShareClock("/nowhere/at/all", reading), ENOENT);
}

TEST(ShareTime, GoesOnWithThisMachinesClock) {
  const ShareTime share({5'000'000, test::fakeClock().now / 1000, true});
  EXPECT_EQ(share.nowMs(), 5'000'000);
  test::fakeClock().now += 3'000'000;
  EXPECT_EQ(share.nowMs(), 5'003'000);
}

TEST(RoundingMs, IsASecondWhereTheShareKeepsWholeOnes) {
  EXPECT_EQ(roundingMs({0, 0, true}), 0);
  EXPECT_EQ(roundingMs({0, 0, false}), 1000);
}

TEST(Pace, IsDueEveryFewSeconds) {
  Pace pace(2);
  EXPECT_FALSE(pace.isDue());
  test::fakeClock().now += 1'999'000;
  EXPECT_FALSE(pace.isDue());
  test::fakeClock().now += 1'000;
  EXPECT_TRUE(pace.isDue());
  EXPECT_FALSE(pace.isDue());
  pace.slowDown(10);
  test::fakeClock().now += 9'000'000;
  EXPECT_FALSE(pace.isDue());
  test::fakeClock().now += 1'000'000;
  EXPECT_TRUE(pace.isDue());
}

TEST(SparingPace, PausesASecondAtLeast) {
  SparingPace pace;
  for (int i = 0; i < 3; ++i) EXPECT_GE(pace.pauseMs(), 1000);
}

TEST(SparingPace, StaysBelowAHundredthOfAProcessor) {
  SparingPace pace;
  const std::clock_t start = std::clock();
  while (std::clock() - start < CLOCKS_PER_SEC / 20) {
  }
  const std::int64_t pause = pace.pauseMs();
  EXPECT_GE(pause, 4900) << "50 ms were used";
  EXPECT_LE(pause, 60'000);
}

TEST(Pace, IsDueWhenTheClockWasSetBack) {
  Pace pace(10);
  test::fakeClock().now -= 3'600'000'000;
  EXPECT_TRUE(pace.isDue());
  EXPECT_FALSE(pace.isDue());
}

}  // namespace
}  // namespace marrowbench::ctl
