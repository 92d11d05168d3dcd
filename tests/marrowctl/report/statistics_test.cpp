#include "marrowctl/report/statistics.h"

#include <gtest/gtest.h>

#include <cmath>

#include "marrowctl/report/link_speed.h"

namespace marrowbench::ctl {
namespace {

TEST(Quantile, InterpolatesBetweenOrderStatistics) {
  const struct {
    std::vector<double> values;
    double share, expected;
  } cases[] = {{{5}, 0.25, 5},
               {{1, 2}, 0.5, 1.5},
               {{4, 1, 3, 2}, 0.25, 1.75},
               {{4, 1, 3, 2}, 0.75, 3.25},
               {{10, 20, 30}, 1, 30},
               {{30, 10, 20}, 0, 10}};
  for (const auto& c : cases) {
    std::vector<double> values = c.values;
    EXPECT_DOUBLE_EQ(quantile(values, c.share), c.expected) << c.share;
  }
}

TEST(SpreadOf, HasTheSampleDeviation) {
  std::vector<double> values = {2, 4, 4, 4, 5, 5, 7, 9};
  const Spread spread = spreadOf(values);
  EXPECT_EQ(spread.count, 8);
  EXPECT_DOUBLE_EQ(spread.mean, 5);
  EXPECT_DOUBLE_EQ(spread.median, 4.5);
  ASSERT_TRUE(spread.cv);
  EXPECT_DOUBLE_EQ(*spread.cv, std::sqrt(32.0 / 7) / 5);
}

TEST(SpreadOf, OneValueHasNoDeviation) {
  std::vector<double> values = {3};
  EXPECT_FALSE(spreadOf(values).cv);
}

TEST(OutliersOf, AreFarOnEitherSide) {
  EXPECT_EQ(outliersOf({100, 101, 99, 100, 10, 100, 200}), (std::vector<std::size_t>{4, 6}));
}

TEST(OutliersOf, ATenthIsNotFarThoughTheOthersAreEqual) {
  EXPECT_TRUE(outliersOf({100, 100, 100, 100, 109.9}).empty());
  EXPECT_EQ(outliersOf({100, 100, 100, 100, 110.1}), std::vector<std::size_t>{4});
}

TEST(OutliersOf, WideSpreadHasNone) { EXPECT_TRUE(outliersOf({10, 50, 100, 150, 190}).empty()); }

TEST(LinkSpeedFrom, CountsBitsInPowersOfTen) {
  EXPECT_EQ(linkSpeedFrom("10G"), 1.25e9);
  EXPECT_EQ(linkSpeedFrom("2.5Gbit/s"), 312.5e6);
  EXPECT_EQ(linkSpeedFrom("100M"), 12.5e6);
  for (const char* text : {"", "G", "10", "0G", "1.G", "-1G", "1K", "1GB", "1Gx", "1e3G"}) {
    EXPECT_FALSE(linkSpeedFrom(text)) << text;
  }
}

}  // namespace
}  // namespace marrowbench::ctl
