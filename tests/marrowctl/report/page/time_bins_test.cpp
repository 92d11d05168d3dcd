#include "marrowctl/report/page/time_bins.h"

#include <gtest/gtest.h>

#include <numeric>

#include "marrowctl/report/page/made_report.h"

namespace marrowbench::ctl::test {
namespace {

std::vector<double> spreadOver(const TimeBins& bins, double from, double to) {
  std::vector<double> parts(bins.count);
  bins.spread(from, to, 60, [&parts](std::size_t bin, double part) { parts.at(bin) += part; });
  return parts;
}

TEST(TimeBins, ShareByTheTimeInEach) {
  const TimeBins bins{100, 10, 3};
  EXPECT_EQ(spreadOver(bins, 100, 130), (std::vector<double>{20, 20, 20}));
  EXPECT_EQ(spreadOver(bins, 105, 120), (std::vector<double>{20, 40, 0}));
  EXPECT_EQ(spreadOver(bins, 122, 124), (std::vector<double>{0, 0, 60}));
  EXPECT_EQ(spreadOver(bins, 110, 120), (std::vector<double>{0, 60, 0}));
}

TEST(TimeBins, AreAsNarrowAsTheirNumberAllows) {
  const Report report = madeReport({{"pc1", 10, 10000, 0}, {"pc1", 100, 10000, 1}});  // 100 s
  const struct {
    std::size_t most;
    double width;
  } cases[] = {{240, 1}, {101, 1}, {100, 2}, {51, 2}, {21, 5}, {11, 10}, {10, 15}, {2, 120}};
  for (const auto& c : cases) {
    const TimeBins bins = timeBinsOf(report, c.most);
    EXPECT_EQ(bins.width, c.width) << c.most;
    EXPECT_LE(bins.count, c.most);
  }
}

TEST(TimeBins, HoldAllBytes) {
  const Report report = madeReport({{"pc1", 7, 6300, 0},
                                    {"pc2", 15, 1, 0},
                                    {"pc1", 95, 33333, 1},
                                    {"pc2", 99, 1000, 1, "Posix", 64, 0, 100, "ERROR"}});
  for (const std::size_t most : {240U, 30U, 2U}) {
    const auto bytes =
        bytesByBin(report, timeBinsOf(report, most), 1, [](const ResultRow&) { return 0U; });
    EXPECT_NEAR(std::accumulate(bytes[0].begin(), bytes[0].end(), 0.0), 300.0 * 1048576, 2048)
        << most;
  }
}

TEST(TimeBins, AreNoneWhereNothingMoved) {
  EXPECT_EQ(timeBinsOf(madeReport({{"pc1", 9, 1000, 0, "Posix", 64, 0, 100, "ERROR"}}), 10).count,
            0U);
}

}  // namespace
}  // namespace marrowbench::ctl::test
