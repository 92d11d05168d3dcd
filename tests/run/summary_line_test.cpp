#include "run/summary_line.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "helpers/printed.h"

namespace marrowbench {
namespace {

using test::printedBy;

constexpr std::int64_t kMiB = 1048576;
constexpr std::int64_t kNoNumber = std::numeric_limits<std::int64_t>::min();

RunStats runOf(std::int64_t bytes, std::int64_t ms) {
  RunStats stats;
  stats.files = 1;
  stats.bytes = bytes;
  stats.dataMs = ms;
  return stats;
}

RunStats throttledRun(std::uint16_t chunks, std::uint16_t waitMs, std::int64_t ms) {
  RunStats stats = runOf(chunks * kMiB, ms);
  stats.chunks = chunks;
  stats.waitMs = waitMs;
  return stats;
}

TEST(CopySpeedPercent, IsTheShareOfTheTimeWithoutPauses) {
  const struct {
    std::uint16_t chunks;
    std::uint16_t waitMs;
    std::int64_t ms;
    float percent;
  } cases[] = {{10, 50, 2000, 75},  {10, 0, 2000, 100}, {10, 50, 0, 100}, {10, 50, 500, 0},
               {10, 50, 200, -150}, {1, 1, 8, 87.5F},   {10, 0, 0, 100}};
  for (const auto& c : cases) {
    RunStats stats = throttledRun(c.chunks, c.waitMs, c.ms);
    EXPECT_EQ(copySpeedPercent(stats), c.percent)
        << c.chunks << " * " << c.waitMs << " in " << c.ms;
  }
}

TEST(CopySpeedPercent, CountsTheChunksOfARunWithoutCount) {
  const struct {
    std::int32_t stepBytes;
    std::int64_t bytes;
    std::int32_t stepAfter;
    std::uint16_t chunks;
    float percent;
  } cases[] = {{0, 10 * kMiB + 5, 1048576, 10, 75},
               {-4096, 10 * kMiB - 1, 1048576, 9, 77.5F},
               {4096, 10 * 4096, 4096, 10, 75},
               {1048576, 65537 * kMiB, 1048576, 1, 97.5F}};
  for (const auto& c : cases) {
    RunStats stats = runOf(c.bytes, 2000);
    stats.waitMs = 50;
    stats.stepBytes = c.stepBytes;
    EXPECT_FLOAT_EQ(copySpeedPercent(stats), c.percent) << c.stepBytes;
    EXPECT_EQ(stats.stepBytes, c.stepAfter);
    EXPECT_EQ(stats.chunks, c.chunks) << c.stepBytes;
    EXPECT_FLOAT_EQ(copySpeedPercent(stats), c.percent) << "asked again";
  }
}

TEST(CopySpeedPercent, LeavesTheRecordWithoutPauses) {
  RunStats stats = runOf(10 * kMiB, 2000);
  stats.stepBytes = 0;
  EXPECT_EQ(copySpeedPercent(stats), 100);
  EXPECT_EQ(stats.stepBytes, 0);
  EXPECT_EQ(stats.chunks, 0);
}

TEST(CopySpeedPercent, KeepsThePausesIn32Bits) {
  RunStats stats = throttledRun(65535, 65535, 131071);  // 4,294,836,225 ms read as -131,071
  EXPECT_EQ(copySpeedPercent(stats), 200);
}

TEST(RoundedCopySpeedPercent, RoundsHalvesAwayFromZero) {
  const struct {
    std::uint16_t chunks;
    std::int64_t ms;
    std::int64_t percent;
  } cases[] = {{1, 8, 88}, {9, 8, -13}, {2, 3, 33}, {1, 3, 67}, {3, 2, -50}, {1, 1, 0}};
  for (const auto& c : cases) {
    RunStats stats = throttledRun(c.chunks, 1, c.ms);
    EXPECT_EQ(roundedCopySpeedPercent(stats), c.percent) << c.chunks << " in " << c.ms;
  }
}

TEST(KibPerSecond, RoundsToTheNearest) {
  const struct {
    std::int64_t bytes;
    std::int64_t ms;
    std::int64_t speed;
  } cases[] = {{kMiB, 2, 512000}, {1536, 1000, 2}, {1535, 1000, 1}, {0, 5, 0}, {100, 1000, 0}};
  for (const auto& c : cases) EXPECT_EQ(kibPerSecond(runOf(c.bytes, c.ms)), c.speed) << c.bytes;
}

TEST(KibPerSecond, KeepsSinglePrecision) {
  EXPECT_EQ(kibPerSecond(runOf(123456789012, 7)), 17223323648);
}

TEST(KibPerSecond, KeepsItsAnswerToATimeOfZero) {
  EXPECT_EQ(kibPerSecond(runOf(kMiB, 0)), kNoNumber);
  EXPECT_EQ(kibPerSecond(runOf(0, 0)), kNoNumber);
}

TEST(SummaryLine, ShowsFilesSizeTimeSpeedAndPercent) {
  RunStats stats = runOf(100 * kMiB, 2500);
  EXPECT_EQ(summaryLine(stats).view(),
            "1 files copied ( 100.00 MiB. 2.50s. 40.000 MiB/s. Copy speed setting: 100% )");
  EXPECT_EQ(summaryLine(stats, true).view(),
            "   1 files copied (  100.00 MiB. 2.50s.  40.000 MiB/s. Copy speed setting: 100% )");
  RunStats slow = throttledRun(10, 50, 2000);
  EXPECT_EQ(summaryLine(slow).view(),
            "1 files copied ( 10.00 MiB. 2.00s. 5.000 MiB/s. Copy speed setting: 75% )");
  EXPECT_EQ(summaryLine(slow, true).view(),
            "   1 files copied (   10.00 MiB. 2.00s.   5.000 MiB/s. Copy speed setting:  75% )");
}

TEST(SummaryLine, ShowsNoSpeedWithoutTime) {
  RunStats stats = runOf(kMiB, 0);
  stats.waitMs = 50;
  EXPECT_EQ(summaryLine(stats).view(),
            "1 files copied ( 1.00 MiB. 0.00s. 0.000 MiB/s. Copy speed setting: 100% )");
  RunStats none;
  EXPECT_EQ(summaryLine(none).view(),
            "0 files copied ( 0.00 MiB. 0.00s. 0.000 MiB/s. Copy speed setting: 100% )");
}

TEST(SummaryLine, ShowsMinutesAboveSixtySeconds) {
  const struct {
    std::int64_t ms;
    std::string text;
  } cases[] = {{9, "0.00s"},       {1234, "1.23s"},    {59999, "59.99s"},   {60000, "60.00s"},
               {60001, "1.00m.s"}, {61500, "1.01m.s"}, {119999, "1.59m.s"}, {6000000, "100.00m.s"}};
  for (const auto& c : cases) {
    RunStats stats = runOf(0, c.ms);
    EXPECT_EQ(summaryLine(stats).view(),
              "1 files copied ( 0.00 MiB. " + c.text + ". 0.000 MiB/s. Copy speed setting: 100% )")
        << c.ms;
  }
}

TEST(SummaryLine, RoundsThePercentHalfAwayFromZero) {
  const struct {
    std::uint16_t chunks;
    std::string text;
  } cases[] = {{1, "setting: 88% )"}, {9, "setting: -13% )"}};
  for (const auto& c : cases) {
    RunStats stats = throttledRun(c.chunks, 1, 8);
    EXPECT_TRUE(summaryLine(stats).view().ends_with(c.text)) << summaryLine(stats).c_str();
  }
}

TEST(SummaryLine, ShowsTheLowestNumberForAPercentThatDoesNotFit) {
  RunStats stats = throttledRun(32768, 65535, 1);
  EXPECT_TRUE(summaryLine(stats).view().ends_with("setting: -2147483648% )"));
}

TEST(PrintEmptyCacheInfo, TellsModeFourWithPosixAndSystem) {
  const struct {
    Method method;
    std::int32_t mode;
    bool tells;
  } cases[] = {{Method::posix, 4, true},   {Method::system, 4, true},  {Method::stream, 4, false},
               {Method::ansiC, 4, false},  {Method::winApi, 4, false}, {Method::posix, 3, false},
               {Method::system, 5, false}, {Method::posix, 0, false}};
  for (const auto& c : cases) {
    TestConfig config;
    config.method = c.method;
    config.parameters.parameters.emptyCacheMode = c.mode;
    EXPECT_EQ(printedBy([&config] { EXPECT_TRUE(printEmptyCacheInfo(config)); }),
              c.tells ? "                  "
                        "Empty Cache mode 4 POSIX_FADV_NOREUSE | POSIX_FADV_DONTNEED\n"
                      : "")
        << static_cast<int>(c.method) << ", " << c.mode;
  }
}

std::string destinationInfo(TestConfig& config) {
  return printedBy([&config] { printDestinationInfo(config); });
}

TEST(PrintDestinationInfo, ShowsTheAddressOfTheServer) {
  TestConfig config;
  config.source = "\\\\server\\in";
  config.dest = "a\\b\\c";
  config.destAddress.bytes = {192, 168, 1, 20};
  config.interfaceCount = 3;
  EXPECT_EQ(destinationInfo(config),
            "                  Destination fileserver IP: 192.168.001.020\n");
  EXPECT_EQ(config.dest.view(), "a/b/c");
  EXPECT_EQ(config.source.view(), "//server/in");
  EXPECT_EQ(config.interfaceCount, 0);
}

TEST(PrintDestinationInfo, PrintsNothingForMemory) {
  for (const char* memory : {"", "MEMORY", "Memory"}) {
    TestConfig config;
    config.source = "a\\b";
    config.dest = memory;
    config.interfaceCount = 1;
    EXPECT_EQ(destinationInfo(config), "") << memory;
    EXPECT_EQ(config.source.view(), "a/b") << memory;
    EXPECT_EQ(config.interfaceCount, 0) << memory;
  }
}

}  // namespace
}  // namespace marrowbench
