#include "marrowctl/report/speeds.h"

#include <gtest/gtest.h>

#include <utility>

#include "marrowctl/table/made_tables.h"

namespace marrowbench::ctl {
namespace {

using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;
using Figures = std::vector<double>;

Figures listed(std::span<double> figures) { return {figures.begin(), figures.end()}; }

ResultSet setOfTests(std::size_t tests) {
  ResultSet set;
  set.tests.resize(tests);
  for (std::uint32_t i = 0; i < tests; ++i) set.series.push_back({0, i});
  return set;
}

Ranges rangesOf(const std::vector<MovedRows>& counts) {
  Ranges ranges;
  for (const TestRange range : rangesOfTests(setOfTests(counts.size()), counts))
    ranges.emplace_back(range.begin, range.end);
  return ranges;
}

TEST(RangesOfTests, HoldTwoMillionRowsOrOneTest) {
  EXPECT_TRUE(rangesOf({}).empty());
  EXPECT_EQ(rangesOf({{1, 999'999}, {0, 1'000'000}}), (Ranges{{0, 2}}));
  EXPECT_EQ(rangesOf({{1, 999'999}, {1, 1'000'000}}), (Ranges{{0, 1}, {1, 2}}));
  EXPECT_EQ(rangesOf({{0, 9'000'000}, {0, 0}, {0, 9'000'000}}), (Ranges{{0, 1}, {1, 2}, {2, 3}}));
}

// A client writes the files of two tests, another one the first test's only; each row takes another
// time.
class Grouped : public ::testing::Test {
 protected:
  void SetUp() override {
    // The second client comes last, so that the series of the first test do not stand together.
    tables.add("a.csv", {{0, 1, "/s/c1/one_0.bin"},
                         {1, 4, "/s/c1/one_1.bin"},
                         {5, 8, "/s/c1/one_2.bin"},
                         {20, 16, "/s/c1/two_0.bin"},
                         {36, 20, "/s/c1/two_1.bin"},
                         {56, 25, "/s/c1/two_2.bin"},
                         {90, 2, "/s/c2/one_0.bin"},
                         {92, 5, "/s/c2/one_1.bin"},
                         {97, 10, "/s/c2/one_2.bin"}});
    tables.options.hosts = {"c1", "c2"};
    tables.found();
    ASSERT_EQ(set().tests.size(), 2U);
    ASSERT_EQ(set().series.size(), 3U);
    counts.assign(set().series.size(), {1, 2});
  }

  [[nodiscard]] const ResultSet& set() const { return tables.outcome.set; }

  test::MadeTables tables;
  std::vector<MovedRows> counts;
};

TEST_F(Grouped, StandByTestThenClientThenIteration) {
  GroupedFigures figures(set(), counts, {0, 2});
  EXPECT_EQ(listed(figures.timesOf(0)), (Figures{1000, 4000, 8000, 2000, 5000, 10000}));
  EXPECT_EQ(listed(figures.timesOf(1)), (Figures{16000, 20000, 25000}));
  EXPECT_EQ(listed(figures.speedsOf(0)), (Figures{1, 0.25, 0.125, 0.5, 0.2, 0.1}));
  EXPECT_EQ(listed(figures.speedsOfSeries(2)), (Figures{0.5, 0.2, 0.1}));
  EXPECT_EQ(listed(figures.speedsOfSeries(1)), (Figures{0.0625, 0.05, 0.04}));
}

TEST_F(Grouped, AreTheSameInARangeOfOneTest) {
  GroupedFigures first(set(), counts, {0, 1}), second(set(), counts, {1, 2});
  EXPECT_EQ(listed(first.timesOf(0)), (Figures{1000, 4000, 8000, 2000, 5000, 10000}));
  EXPECT_EQ(listed(first.speedsOfSeries(2)), (Figures{0.5, 0.2, 0.1}));
  EXPECT_EQ(listed(second.timesOf(1)), (Figures{16000, 20000, 25000}));
  EXPECT_EQ(listed(second.speedsOf(1)), (Figures{0.0625, 0.05, 0.04}));
  EXPECT_EQ(listed(second.speedsOfSeries(1)), (Figures{0.0625, 0.05, 0.04}));
}

}  // namespace
}  // namespace marrowbench::ctl
