#include "run/test_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace marrowbench {
namespace {

using Bytes = std::vector<std::byte>;

Bytes testData(std::size_t size, std::uint64_t seed) {
  Bytes data(size);
  fillTestData(data, seed);
  return data;
}

std::string hex(const Bytes& data) {
  std::string text;
  for (const std::byte byte : data) {
    char digits[3];
    (void)std::snprintf(digits, sizeof digits, "%02x", std::to_integer<unsigned>(byte));
    text += digits;
  }
  return text;
}

TEST(TestDataSeed, TellsConfigurationsAndIterationsApart) {
  const struct {
    std::int32_t configIndex;
    std::int32_t iteration;
    std::uint64_t seed;
  } cases[] = {{0, 0, 0}, {0, 1, 1}, {1, 0, 1333}, {2, 3, 2669}, {199, 7, 265274}};
  for (const auto& c : cases) {
    EXPECT_EQ(testDataSeed(c.configIndex, c.iteration), c.seed)
        << c.configIndex << ", " << c.iteration;
  }
}

TEST(TestDataSeed, AddsIn64Bits) { EXPECT_EQ(testDataSeed(1, 2147483647), 2147484980U); }

TEST(FillTestData, IsTheSameOnEverySystem) {
  const struct {
    std::int32_t configIndex;
    std::int32_t iteration;
    const char* bytes;
  } cases[] = {{0, 0, "ed43b84144aff4fb404fa6685e3c8293"},
               {0, 1, "be9dc815dd5019470b93b4f64e11af2e"},
               {2, 3, "6b8d3855e3cabc9864f3c2d26b521d36"}};
  for (const auto& c : cases) {
    EXPECT_EQ(hex(testData(16, testDataSeed(c.configIndex, c.iteration))), c.bytes)
        << c.configIndex << ", " << c.iteration;
  }
}

TEST(FillTestData, UsesEveryByteButTheLowestAndTheHighest) {
  for (const std::uint64_t seed : {0U, 1U, 2669U}) {
    Bytes data = testData(100000, seed);
    std::sort(data.begin(), data.end());
    EXPECT_EQ(std::unique(data.begin(), data.end()) - data.begin(), 254) << seed;
    EXPECT_EQ(data.front(), std::byte{1}) << seed;
  }
}

TEST(FillTestData, FillsNothingElse) {
  Bytes data(8, std::byte{0xFF});
  fillTestData({data.data() + 2, 3}, 1);
  EXPECT_EQ(hex(data), "ffffbe9dc8ffffff");
}

}  // namespace
}  // namespace marrowbench
