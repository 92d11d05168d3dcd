#include "run/test_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace marrowbench {
namespace {

using Bytes = std::vector<std::byte>;

Bytes testData(std::size_t size, std::uint64_t seed, FillPath path = fastestFillPath()) {
  Bytes data(size);
  fillTestData(data, seed, path);
  return data;
}

std::string hex(const Bytes& data) {
  std::ostringstream text;
  text << std::hex << std::setfill('0');
  for (const std::byte byte : data) text << std::setw(2) << std::to_integer<int>(byte);
  return text.str();
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

// Each path that this machine has gives the bytes of the plain loop.
class FillPaths : public testing::TestWithParam<FillPath> {
 protected:
  void SetUp() override {
    if (!canFill(GetParam())) GTEST_SKIP() << "this processor does not have it";
  }

  // Fills the bytes from `start` on, with a guard before and behind them, and compares.
  static void expectTheSame(const Bytes& expected, std::size_t start, std::uint64_t seed) {
    constexpr std::byte kGuard{0};
    Bytes data(start + expected.size() + 1, kGuard);
    const std::span<std::byte> filled = std::span(data).subspan(start, expected.size());
    fillTestData(filled, seed, GetParam());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), filled.begin()))
        << "size " << expected.size() << ", start " << start << ", seed " << seed;
    EXPECT_EQ(data.back(), kGuard);
    EXPECT_TRUE(start == 0 || data[start - 1] == kGuard);
  }

  static Bytes plain(std::size_t size, std::uint64_t seed) {
    return testData(size, seed, FillPath::byteLoop);
  }
};

TEST_P(FillPaths, FillEverySmallSizeAlike) {
  Bytes expected = plain(4096, 7);
  for (; !expected.empty(); expected.pop_back()) expectTheSame(expected, 0, 7);
  expectTheSame(expected, 0, 7);
}

TEST_P(FillPaths, FillLargeSizesAndUnalignedStartsAlike) {
  std::mt19937 random(1);
  for (std::size_t start = 0; start < 64; start += 3) {
    expectTheSame(plain(4097 + random() % 300'000, start), start, start);
  }
}

TEST_P(FillPaths, FillAlikeForEverySeed) {
  std::mt19937_64 random(2);
  std::vector<std::uint64_t> seeds = {0, 1, ~std::uint64_t{0}};
  for (int i = 0; i < 300; ++i) seeds.push_back(random());
  for (const std::uint64_t seed : seeds) expectTheSame(plain(5000, seed), 1, seed);
}

INSTANTIATE_TEST_SUITE_P(All, FillPaths,
                         testing::Values(FillPath::byteLoop, FillPath::scalarLanes,
                                         FillPath::vector256, FillPath::vector512));

TEST(FastestFillPath, IsTheWidestThatIsThere) {
  EXPECT_TRUE(canFill(fastestFillPath()));
  EXPECT_TRUE(canFill(FillPath::scalarLanes));
  EXPECT_EQ(fastestFillPath() == FillPath::vector512, canFill(FillPath::vector512));
  EXPECT_EQ(fastestFillPath() == FillPath::scalarLanes,
            !canFill(FillPath::vector256) && !canFill(FillPath::vector512));
}

}  // namespace
}  // namespace marrowbench
