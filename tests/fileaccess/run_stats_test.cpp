#include "fileaccess/run_stats.h"

#include <gtest/gtest.h>

namespace marrowbench {
namespace {

RunStats throttled(std::int32_t stepBytes) {
  RunStats stats;
  stats.waitMs = 50;
  stats.stepBytes = stepBytes;
  return stats;
}

TEST(RunStats, StartsAtZeroExceptRunWordAndStepBytes) {
  const RunStats stats;
  EXPECT_EQ(stats.bytes, 0);
  EXPECT_EQ(stats.waitMs, 0);
  EXPECT_EQ(stats.files, 0);
  EXPECT_EQ(stats.dataMs, 0);
  EXPECT_EQ(stats.runWord, 1);
  EXPECT_EQ(stats.chunks, 0);
  EXPECT_EQ(stats.stepBytes, 1048576);
}

TEST(ParameterBlock, StartsWithTheInterfacesOwnBufferingAndNoCheckMade) {
  const ParameterBlock block;
  EXPECT_EQ(block.systemBuffer, -1);
  EXPECT_EQ(block.chunkWait, 0);
  EXPECT_EQ(block.chunkSize, 0);
  EXPECT_FALSE(block.prealloc);
  EXPECT_FALSE(block.flush);
  EXPECT_EQ(block.nullPosition, -1);
  EXPECT_EQ(block.startMs, 0);
}

TEST(RecordRun, SumsFilesBytesAndTime) {
  RunStats stats;
  recordRun(stats, 3221225472, 1200);
  recordRun(stats, 1000, 0);
  EXPECT_EQ(stats.files, 2);
  EXPECT_EQ(stats.bytes, 3221226472);
  EXPECT_EQ(stats.dataMs, 1200);
  EXPECT_EQ(stats.runWord, 1);
}

TEST(RecordRun, IgnoresNegativeValues) {
  RunStats stats = throttled(10);
  recordRun(stats, -1, 5);
  recordRun(stats, 100, -1);
  EXPECT_EQ(stats.files, 0);
  EXPECT_EQ(stats.bytes, 0);
  EXPECT_EQ(stats.dataMs, 0);
  EXPECT_EQ(stats.chunks, 0);
}

TEST(RecordRun, CountsAnEmptyRun) {
  RunStats stats;
  recordRun(stats, 0, 0);
  EXPECT_EQ(stats.files, 1);
}

TEST(RecordRun, CountsWholeChunksOnlyWithAPauseAndAStep) {
  const struct {
    std::uint16_t waitMs;
    std::int32_t stepBytes;
    std::uint16_t chunks;
  } cases[] = {{50, 4096, 2}, {1, 10000, 1}, {50, 10001, 0}, {0, 4096, 0}, {50, 0, 0}, {50, -8, 0}};
  for (const auto& c : cases) {
    RunStats stats;
    stats.waitMs = c.waitMs;
    stats.stepBytes = c.stepBytes;
    recordRun(stats, 10000, 1);
    EXPECT_EQ(stats.chunks, c.chunks) << c.waitMs << " ms, step " << c.stepBytes;
  }
}

TEST(RecordRun, KeepsWrappingTheChunkCountAt16Bits) {
  RunStats stats = throttled(1);
  recordRun(stats, 65535, 1);
  EXPECT_EQ(stats.chunks, 65535);
  recordRun(stats, 65536 + 3, 1);
  EXPECT_EQ(stats.chunks, 2);
}

}  // namespace
}  // namespace marrowbench
