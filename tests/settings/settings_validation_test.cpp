#include "settings/settings_validation.h"

#include <gtest/gtest.h>

namespace marrowbench {
namespace {

constexpr std::int32_t kMiB = 1048576;
constexpr std::int32_t kPause = 7;

// A record as the parser leaves it, with both flags and a pause; the statistics have the same pause
// and chunk size as the parameters.
TestConfig parsedRecord(Method method, TestType type, std::int32_t systemBuffer,
                        std::int32_t chunkSize) {
  TestConfig config;
  config.method = method;
  if (type != TestType::write) config.sourceTemplate = "/in/source.bin";
  if (type != TestType::read) config.destTemplate = "/out/dest.bin";
  ParameterBlock& p = config.parameters.parameters;
  p.systemBuffer = systemBuffer;
  p.chunkSize = p.stats.stepBytes = chunkSize;
  p.chunkWait = kPause;
  p.stats.waitMs = kPause;
  p.prealloc = p.flush = true;
  return config;
}

struct Case {
  TestType type;
  std::int32_t systemBuffer;
  std::int32_t chunkSize;
  std::int32_t systemBufferAfter;
  std::int32_t chunkSizeAfter;
  bool prealloc;
  bool flush;
};

constexpr TestType kCopy = TestType::copy;
constexpr TestType kRead = TestType::read;
constexpr TestType kWrite = TestType::write;

template <std::size_t Count>
void expectAll(Method method, const Case (&cases)[Count]) {
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "type " << static_cast<int>(c.type) << ", system buffer "
                                    << c.systemBuffer << ", chunk size " << c.chunkSize);
    TestConfig config = parsedRecord(method, c.type, c.systemBuffer, c.chunkSize);
    validate(config);
    const ParameterBlock& p = config.parameters.parameters;
    EXPECT_EQ(p.systemBuffer, c.systemBufferAfter);
    EXPECT_EQ(p.chunkSize, c.chunkSizeAfter);
    EXPECT_EQ(p.stats.stepBytes, c.chunkSizeAfter);
    EXPECT_EQ(p.prealloc, c.prealloc);
    EXPECT_EQ(p.flush, c.flush);
    const std::int32_t pause = c.chunkSizeAfter == 0 ? 0 : kPause;
    EXPECT_EQ(p.chunkWait, pause);
    EXPECT_EQ(p.stats.waitMs, pause);
  }
}

TEST(Validate, PosixPreallocatesUnlessReadingAndNeedsAChunkToCopy) {
  expectAll(Method::posix, {{kCopy, 1, 4096, 1, 4096, true, true},
                            {kCopy, 2, 4096, 1, 4096, true, true},
                            {kCopy, -3, 4096, -3, 4096, true, true},
                            {kCopy, 0, 0, 0, kMiB, true, true},
                            {kCopy, 0, -5, 0, -5, true, true},
                            {kWrite, 5, 4096, 1, 4096, true, true},
                            {kWrite, 0, 0, 0, 0, true, false},
                            {kRead, 5, 4096, 1, 4096, false, false},
                            {kRead, 0, 0, 0, 0, false, false}});
}

TEST(Validate, WinApiAllowsASystemBufferOfTwo) {
  expectAll(Method::winApi, {{kCopy, 1, 4096, 1, 4096, true, true},
                             {kCopy, 2, 4096, 2, 4096, true, true},
                             {kCopy, 3, 0, 2, kMiB, true, true},
                             {kWrite, 5, 0, 2, 0, true, false},
                             {kRead, 0, 4096, 0, 4096, false, false}});
}

TEST(Validate, KeepsFlushAndADefaultChunkForEverySystemTest) {
  expectAll(Method::system, {{kCopy, 5, 4096, -1, 4096, false, true},
                             {kCopy, 0, 0, -1, kMiB, false, true},
                             {kWrite, 1, 0, -1, kMiB, false, true},
                             {kRead, 1, 4096, -1, 4096, false, true},
                             {kRead, 1, 0, -1, kMiB, false, true},
                             {kRead, -4, -5, -1, -5, false, true}});
}

TEST(Validate, StreamNeedsAChunkForABufferAndNeverDefaultsIt) {
  expectAll(Method::stream, {{kCopy, 5, 4096, 1, 4096, false, true},
                             {kCopy, 0, 1, 0, 1, false, true},
                             {kCopy, 0, 0, -1, 0, false, false},
                             {kCopy, 2, -5, -1, -5, false, true},
                             {kCopy, -3, 0, -3, 0, false, false},
                             {kWrite, 1, 0, -1, 0, false, false},
                             {kRead, 1, 4096, 1, 4096, false, false}});
}

TEST(Validate, AnsiCNeedsAChunkForABufferAndDefaultsItToCopy) {
  expectAll(Method::ansiC, {{kCopy, 5, 4096, 1, 4096, false, true},
                            {kCopy, 0, 1, 0, 1, false, true},
                            {kCopy, 0, 0, -1, kMiB, false, true},
                            {kCopy, 1, -5, -1, -5, false, true},
                            {kCopy, -2, 0, -2, kMiB, false, true},
                            {kCopy, -2, -5, -2, -5, false, true},
                            {kWrite, 1, 0, -1, 0, false, false},
                            {kWrite, -2, 0, -2, 0, false, false},
                            {kRead, 1, 0, -1, 0, false, false},
                            {kRead, 9, 4096, 1, 4096, false, false}});
}

TEST(Validate, UnknownMethodOnlyLosesPreallocation) {
  expectAll(static_cast<Method>(7), {{kCopy, 9, 4096, 9, 4096, false, true},
                                     {kCopy, 0, 0, 0, 0, false, false},
                                     {kRead, 0, 4096, 0, 4096, false, false}});
}

// It runs as a read test all the same.
TEST(Validate, KeepsTreatingATestFromMemoryToMemoryAsAWriteTest) {
  TestConfig config = parsedRecord(Method::posix, kWrite, 0, 4096);
  config.destTemplate.clear();
  validate(config);
  EXPECT_TRUE(config.parameters.parameters.prealloc);
  EXPECT_TRUE(config.parameters.parameters.flush);
  EXPECT_EQ(testTypeOf(config.sourceTemplate, config.destTemplate), kRead);
}

TEST(Validate, FileSizeIsAtMostOneGiB) {
  const struct {
    std::int32_t before;
    std::int32_t after;
  } cases[] = {{1073741825, 1073741824},
               {2147483647, 1073741824},
               {1073741824, 1073741824},
               {1073741823, 1073741823},
               {0, 0},
               {-5120, -5120}};
  for (const auto& c : cases) {
    TestConfig config = parsedRecord(Method::posix, kWrite, 0, 4096);
    config.parameters.parameters.fileSize = c.before;
    validate(config);
    EXPECT_EQ(config.parameters.parameters.fileSize, c.after) << c.before;
  }
}

}  // namespace
}  // namespace marrowbench
