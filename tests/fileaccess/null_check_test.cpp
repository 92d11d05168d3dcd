#include "fileaccess/null_check.h"

#include <gtest/gtest.h>

#include <vector>

namespace marrowbench {
namespace {

using Bytes = std::vector<std::byte>;

constexpr std::byte kData{7};
constexpr std::byte kNull{0};
constexpr std::ptrdiff_t kChunkSamples[] = {1, 50, 100, 150, 200, 250, 300};
constexpr std::ptrdiff_t kWholeSamples[] = {1, 100, 200, 300, 400, 500};

std::byte& placeBeforeEnd(Bytes& bytes, std::ptrdiff_t places) { return *(bytes.end() - places); }

std::int64_t afterChunk(const Bytes& bytes, std::int64_t total, std::int64_t before = 0) {
  std::int64_t position = before;
  checkChunkForNulls(bytes.data() + bytes.size(), static_cast<std::int32_t>(bytes.size()), total,
                     position);
  return position;
}

std::int64_t afterWhole(const Bytes& bytes, std::int64_t before = 0) {
  std::int64_t position = before;
  checkWholeForNulls(bytes.data() + bytes.size(), static_cast<std::int32_t>(bytes.size()),
                     position);
  return position;
}

TEST(CheckChunkForNulls, LooksAtSevenBytesOnly) {
  Bytes sampled(400, kData);
  for (const auto places : kChunkSamples) placeBeforeEnd(sampled, places) = kNull;
  EXPECT_EQ(afterChunk(sampled, 5000), 4700);

  for (const auto places : kChunkSamples) {
    Bytes nulls(400, kNull);
    placeBeforeEnd(nulls, places) = kData;
    EXPECT_EQ(afterChunk(nulls, 5000), 0) << places;
  }
}

TEST(CheckChunkForNulls, LooksAtChunksOf301BytesAndMore) {
  EXPECT_EQ(afterChunk(Bytes(300, kNull), 1000), 0);
  EXPECT_EQ(afterChunk(Bytes(301, kNull), 1000), 700);
}

TEST(CheckChunkForNulls, KeepsTheFirstPosition) {
  EXPECT_EQ(afterChunk(Bytes(400, kNull), 1000, 1), 1);
  EXPECT_EQ(afterChunk(Bytes(400, kNull), 1000, -1), 700);
}

TEST(CheckChunkForNulls, CountsBeyondFourGiB) {
  EXPECT_EQ(afterChunk(Bytes(400, kNull), 5368709120), 5368708820);
}

TEST(CheckWholeForNulls, LooksAtSixBytesOnly) {
  Bytes sampled(600, kData);
  for (const auto places : kWholeSamples) placeBeforeEnd(sampled, places) = kNull;
  EXPECT_EQ(afterWhole(sampled), 100);

  for (const auto places : kWholeSamples) {
    Bytes nulls(600, kNull);
    placeBeforeEnd(nulls, places) = kData;
    EXPECT_EQ(afterWhole(nulls), 0) << places;
  }
}

TEST(CheckWholeForNulls, LooksAt500BytesAndMore) {
  EXPECT_EQ(afterWhole(Bytes(499, kNull), -1), -1);
  EXPECT_EQ(afterWhole(Bytes(500, kNull), -1), 0);
  EXPECT_EQ(afterWhole(Bytes(501, kNull), -1), 1);
}

TEST(CheckWholeForNulls, KeepsTheFirstPosition) { EXPECT_EQ(afterWhole(Bytes(1000, kNull), 3), 3); }

}  // namespace
}  // namespace marrowbench
