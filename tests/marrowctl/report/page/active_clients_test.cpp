#include "marrowctl/report/page/active_clients.h"

#include <gtest/gtest.h>

#include "marrowctl/report/page/made_report.h"

namespace marrowbench::ctl::test {
namespace {

TEST(ActiveClients, AreCountedWhileTheirRowsLast) {
  // pc1 alone from 0 to 10 s and from 20 to 30 s, both from 10 to 20 s: each moves 10 MiB/s.
  const Report report = madeReport(
      {{"pc1", 10, 10000, 0}, {"pc2", 20, 10000, 0}, {"pc1", 20, 10000, 1}, {"pc1", 30, 10000, 2}});
  const std::vector<ActivePoint> points = activePointsOf(report).at(0);
  ASSERT_EQ(points.size(), 2U);
  EXPECT_EQ(points[0].clients, 1U);
  EXPECT_DOUBLE_EQ(points[0].seconds, 20);
  EXPECT_NEAR(points[0].mibPerSecond, 10, 1e-9);
  EXPECT_NEAR(points[0].medianMibPerSecond, 10, 1e-9);
  EXPECT_EQ(points[1].clients, 2U);
  EXPECT_DOUBLE_EQ(points[1].seconds, 10);
  EXPECT_NEAR(points[1].mibPerSecond, 20, 1e-9);
  EXPECT_NEAR(points[1].medianMibPerSecond, 10, 1e-9);
}

TEST(ActiveClients, StayActiveInShortPausesOnly) {
  // A pause of 10 s, then one of 11 s.
  const std::vector<ActivePoint> points =
      activePointsOf(
          madeReport({{"pc1", 10, 10000, 0}, {"pc1", 30, 10000, 1}, {"pc1", 51, 10000, 2}}))
          .at(0);
  ASSERT_EQ(points.size(), 1U);
  EXPECT_DOUBLE_EQ(points[0].seconds, 40);
  EXPECT_NEAR(points[0].mibPerSecond, 300.0 / 40, 1e-9);
}

TEST(ActiveClients, AreTheSameInAnyOrderOfRows) {
  const std::vector<ActivePoint> points =
      activePointsOf(
          madeReport({{"pc1", 30, 10000, 2}, {"pc1", 10, 10000, 0}, {"pc1", 20, 10000, 1}}))
          .at(0);
  ASSERT_EQ(points.size(), 1U);
  EXPECT_DOUBLE_EQ(points[0].seconds, 30);
}

TEST(ActiveClients, MustLastForASecond) {
  // For half a second pc2 is alone.
  const std::vector<ActivePoint> points = activePointsOf(madeReport({{"pc1", 10, 10000, 0},
                                                                     {"pc2", 10, 10500, 0},
                                                                     {"pc1", 20, 10000, 1},
                                                                     {"pc2", 20, 10000, 1}}))
                                              .at(0);
  ASSERT_EQ(points.size(), 1U);
  EXPECT_EQ(points[0].clients, 2U);
}

}  // namespace
}  // namespace marrowbench::ctl::test
