#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "marrowctl/report/page/compare_page.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostTests = 100;
constexpr std::size_t kRowHeight = 20;  // pixels

constexpr std::string_view kDrawing = R"({
  "encoding": {"y": {"field": "test", "type": "nominal", "sort": null, "title": null,
    "axis": {"labelOverlap": false, "ticks": false, "domain": false, "labelLimit": 360}}},
  "transform": [{"fold": ["old", "new"], "as": ["which", "speed"]}],
  "layer": [
    {"mark": {"type": "line", "style": "guide", "strokeWidth": 2, "opacity": 0.5, "color": "currentColor"}, "encoding": {
      "x": {"field": "speed", "type": "quantitative", "title": "MiB/s, median of rows", "scale": {"zero": true}},
      "detail": {"field": "test"}}},
    {"mark": {"type": "point", "style": "row", "size": 75, "opacity": 1, "filled": true}, "encoding": {
      "x": {"field": "speed", "type": "quantitative"},
      "color": {"field": "which", "type": "nominal", "title": null, "scale": {
        "domain": ["old", "new"], "range": ["#8a8f98", "#0072b2"]}},
      "shape": {"field": "which", "type": "nominal", "title": null, "scale": {
        "domain": ["old", "new"], "range": ["diamond", "circle"]}}}}
  ]
})";

ChartTable tableOf(const Comparison& comparison) {
  ChartTable table({{"test", "Test", ColumnKind::text},
                    {"old", "Old, MiB/s", ColumnKind::number},
                    {"new", "New, MiB/s", ColumnKind::number},
                    {"oldRows", "Old rows", ColumnKind::number},
                    {"newRows", "New rows", ColumnKind::number}});
  for (const ComparedTest& test : comparison.tests) {
    if (!test.before.medianMibPerSecond || !test.after.medianMibPerSecond) continue;
    if (table.rows() == kMostTests) break;
    table.add({test.name, *test.before.medianMibPerSecond, *test.after.medianMibPerSecond,
               static_cast<double>(test.before.rows), static_cast<double>(test.after.rows)});
  }
  return table;
}

}  // namespace

ChartSection mediansSection(const Comparison& comparison) {
  ChartSection section{"medians",
                       "Speeds, old and new",
                       "The median over the rows of all clients that moved something, in each run.",
                       {},
                       "No test moved anything in both runs."};
  const ChartTable table = tableOf(comparison);
  if (table.rows() == 0) return section;
  nlohmann::json drawing = nlohmann::json::parse(kDrawing);
  drawing["height"] = kRowHeight * table.rows();
  const std::size_t all = comparison.tests.size();
  section.charts.push_back(
      {"medians-tests", "Median speed by test, MiB/s", drawing.dump(), table,
       table.rows() == all ? "" : fmt::format("{} of {} tests are shown.", table.rows(), all)});
  return section;
}

}  // namespace marrowbench::ctl
