#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "marrowctl/report/page/compare_page.h"

namespace marrowbench::ctl::test {
namespace {

ComparedTest comparedTest(const std::string& name, double before, double after) {
  ComparedTest test;
  test.name = name;
  test.before = {6, 2, before};
  test.after = {6, 2, after};
  test.ratio = after / before;
  test.low = *test.ratio - 0.1;
  test.high = *test.ratio + 0.1;
  return test;
}

nlohmann::json columnOf(const Chart& chart, const std::string& name) {
  for (const auto& column : nlohmann::json::parse(chart.table.json())) {
    if (column["name"] == name) return column["values"];
  }
  return nullptr;
}

std::string scaleOf(const Chart& chart) {
  const nlohmann::json drawing = nlohmann::json::parse(chart.drawing);
  return drawing["layer"].back()["encoding"]["x"]["scale"].value("type", "linear");
}

TEST(RatioChart, HasTheRatioAndItsInterval) {
  const Chart chart = ratioSection({{comparedTest("a", 100, 80)}, {}, {}}).charts.at(0);
  EXPECT_EQ(columnOf(chart, "ratio"), (nlohmann::json{0.8}));
  EXPECT_EQ(columnOf(chart, "low"), (nlohmann::json{0.7}));
  EXPECT_EQ(columnOf(chart, "high"), (nlohmann::json{0.9}));
  EXPECT_EQ(chart.note, "");
}

TEST(RatioChart, LeavesOutWhatHasNoRatioAndSaysSo) {
  ComparedTest unknown;
  unknown.name = "b";
  const Chart chart = ratioSection({{comparedTest("a", 100, 80), unknown}, {}, {}}).charts.at(0);
  EXPECT_EQ(chart.table.rows(), 1U);
  EXPECT_EQ(chart.note, "1 of 2 tests are shown; the table of tests has all.");
  EXPECT_TRUE(ratioSection({{unknown}, {}, {}}).charts.empty());
  EXPECT_NE(ratioSection({{unknown}, {}, {}}).absence, "");
}

TEST(RatioChart, GoesLogarithmicWhereOneTestWouldHideTheOthers) {
  EXPECT_EQ(scaleOf(ratioSection({{comparedTest("a", 100, 290)}, {}, {}}).charts.at(0)), "linear");
  EXPECT_EQ(scaleOf(ratioSection({{comparedTest("a", 100, 310)}, {}, {}}).charts.at(0)), "log");
  EXPECT_EQ(scaleOf(ratioSection({{comparedTest("a", 310, 100)}, {}, {}}).charts.at(0)), "log");
}

TEST(RatioChart, ShowsAHundredTestsAtMost) {
  const Comparison many{std::vector<ComparedTest>(150, comparedTest("a", 100, 80)), {}, {}};
  EXPECT_EQ(ratioSection(many).charts.at(0).table.rows(), 100U);
  EXPECT_EQ(mediansSection(many).charts.at(0).table.rows(), 100U);
  EXPECT_NE(mediansSection(many).charts.at(0).note, "");
}

TEST(MediansChart, HasBothMedians) {
  const Chart chart = mediansSection({{comparedTest("a", 100, 80)}, {}, {}}).charts.at(0);
  EXPECT_EQ(columnOf(chart, "old"), (nlohmann::json{100}));
  EXPECT_EQ(columnOf(chart, "new"), (nlohmann::json{80}));
}

}  // namespace
}  // namespace marrowbench::ctl::test
