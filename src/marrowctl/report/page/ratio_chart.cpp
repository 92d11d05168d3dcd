#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/report/page/compare_page.h"
#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostTests = 100;
constexpr std::size_t kRowHeight = 22;  // pixels
// Beyond it one test would press the others together on a linear scale.
constexpr double kWidestRatio = 3;

constexpr std::string_view kDrawing = R"({
  "layer": [
    {"data": {"values": [{"from": 0.98, "to": 1.02}]}, "mark": {"type": "rect", "style": "guide", "color": "currentColor", "opacity": 0.1},
      "encoding": {"x": {"field": "from", "type": "quantitative"}, "x2": {"field": "to"}}},
    {"data": {"values": [{"one": 1}]}, "mark": {"type": "rule", "style": "guide", "strokeDash": [4, 4], "opacity": 0.7},
      "encoding": {"x": {"field": "one", "type": "quantitative"}}},
    {"transform": [{"filter": "datum.low != null"}], "mark": {"type": "rule", "style": "part", "strokeWidth": 2.5}, "encoding": {
      "y": {"field": "test", "type": "nominal", "sort": null},
      "x": {"field": "low", "type": "quantitative"}, "x2": {"field": "high"}, "color": {}}},
    {"mark": {"type": "point", "style": "row", "size": 85, "opacity": 1, "filled": true}, "encoding": {
      "y": {"field": "test", "type": "nominal", "sort": null, "title": null,
        "axis": {"labelOverlap": false, "ticks": false, "domain": false, "labelLimit": 360}},
      "x": {"field": "ratio", "type": "quantitative", "title": "New speed / old speed",
        "scale": {"zero": false}},
      "color": {}, "shape": {}}}
  ]
})";

struct Look {
  Difference difference;
  std::string_view colour, shape;
};

// Okabe and Ito, and a shape for those who see no colours.
constexpr Look kLooks[] = {{Difference::slower, "#d55e00", "triangle-left"},
                           {Difference::cannotTell, "#8a8f98", "diamond"},
                           {Difference::same, "#56b4e9", "circle"},
                           {Difference::faster, "#009e73", "triangle-right"}};

Json channelOf(std::string_view Look::*part) {
  Json names, values;
  for (const Look& look : kLooks) {
    names.push_back(nameOf(look.difference));
    values.push_back(look.*part);
  }
  return {{"field", "verdict"},
          {"type", "nominal"},
          {"title", nullptr},
          {"legend", {{"columns", names.size()}}},
          {"scale", {{"domain", names}, {"range", values}}}};
}

bool isFarFromOne(const ComparedTest& test) {
  return test.ratio && *test.ratio > 0 &&
         (*test.ratio > kWidestRatio || *test.ratio < 1 / kWidestRatio);
}

std::string drawingOf(const Comparison& comparison, std::size_t rows) {
  Json drawing = jsonFrom(kDrawing);
  drawing["height"] = kRowHeight * rows;
  for (std::size_t layer = 2; layer < 4; ++layer)
    drawing["layer"][layer]["encoding"]["color"] = channelOf(&Look::colour);
  drawing["layer"][3]["encoding"]["shape"] = channelOf(&Look::shape);
  if (std::any_of(comparison.tests.begin(), comparison.tests.end(), isFarFromOne))
    drawing["layer"][3]["encoding"]["x"]["scale"] = {{"type", "log"}};
  return jsonTextOf(drawing);
}

ChartTable tableOf(const Comparison& comparison) {
  ChartTable table({{"test", "Test", ColumnKind::text},
                    {"verdict", "Verdict", ColumnKind::text},
                    {"ratio", "New / old", ColumnKind::number},
                    {"low", "Interval from", ColumnKind::number},
                    {"high", "Interval to", ColumnKind::number}});
  for (const ComparedTest& test : comparison.tests) {
    if (!test.ratio || *test.ratio <= 0 || table.rows() == kMostTests) continue;
    table.add({test.name, nameOf(test.difference), *test.ratio,
               test.low ? ChartTable::Cell(*test.low) : ChartTable::Cell(),
               test.high ? ChartTable::Cell(*test.high) : ChartTable::Cell()});
  }
  return table;
}

}  // namespace

ChartSection ratioSection(const Comparison& comparison) {
  ChartSection section{
      "ratios",
      "Ratio of speeds, new to old",
      "The mark is the median speed of the new rows over that of the old ones: 1 (dashed) is the "
      "same speed, 0.9 a loss of a tenth. The line is the interval that holds the true ratio with "
      "a chance of 95 %: 2,000 times, clients are drawn at random from those of each run (rows, "
      "where a run has fewer than 5 clients), and the middle 95 % of the ratios are kept. A test "
      "whose line lies within the grey band, 0.98 to 1.02, is the same; else it is slower or "
      "faster when its line does not touch 1.",
      {},
      "No test has a speed in both runs."};
  const ChartTable table = tableOf(comparison);
  if (table.rows() == 0) return section;
  const std::size_t all = comparison.tests.size();
  section.charts.push_back({"ratios-tests", "New speed / old speed, by test, worst first",
                            drawingOf(comparison, table.rows()), table,
                            table.rows() == all
                                ? ""
                                : fmt::format("{} of {} tests are shown; the table of tests has "
                                              "all.",
                                              table.rows(), all)});
  return section;
}

}  // namespace marrowbench::ctl
