#include "marrowctl/report/bootstrap.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl {
namespace {

std::vector<ClientSpeed> speeds(std::uint32_t clients, int rows, double base) {
  std::vector<ClientSpeed> all;
  for (std::uint32_t client = 0; client < clients; ++client) {
    for (int row = 0; row < rows; ++row) all.push_back({base + client, client});
  }
  return all;
}

TEST(RatioInterval, EqualRowsHaveNoWidth) {
  const Interval interval = ratioInterval(speeds(1, 20, 100), speeds(1, 20, 150));
  EXPECT_DOUBLE_EQ(interval.low, 1.5);
  EXPECT_DOUBLE_EQ(interval.high, 1.5);
}

TEST(RatioInterval, IsTheSameEachTime) {
  const Interval one = ratioInterval(speeds(8, 10, 100), speeds(8, 10, 105));
  const Interval other = ratioInterval(speeds(8, 10, 100), speeds(8, 10, 105));
  EXPECT_EQ(one.low, other.low);
  EXPECT_EQ(one.high, other.high);
}

// Rows of a client are alike: more of them make the interval of clients no narrower.
TEST(RatioInterval, DrawsClientsWhereThereAreFive) {
  const Interval few = ratioInterval(speeds(5, 4, 10), speeds(5, 4, 10));
  const Interval many = ratioInterval(speeds(5, 400, 10), speeds(5, 400, 10));
  EXPECT_NEAR(many.high - many.low, few.high - few.low, 0.1);
  const Interval rows = ratioInterval(speeds(4, 400, 10), speeds(4, 400, 10));
  EXPECT_LT(rows.high - rows.low, (many.high - many.low) / 2);
}

}  // namespace
}  // namespace marrowbench::ctl
