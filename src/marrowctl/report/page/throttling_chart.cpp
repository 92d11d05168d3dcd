#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kDrawing = R"({
  "height": 250,
  "encoding": {
    "x": {"field": "percent", "type": "quantitative", "title": "Copy speed setting, %",
      "scale": {"domain": [0, 100]}},
    "detail": {"field": "series"}
  },
  "layer": [
    {"mark": {"type": "line", "style": "guide", "strokeDash": [4, 4], "strokeWidth": 1.3, "opacity": 0.75}, "encoding": {
      "y": {"field": "expected", "type": "quantitative", "title": "MiB/s of a row"}}},
    {"mark": {"type": "rule", "style": "part", "strokeWidth": 2}, "encoding": {
      "y": {"field": "p25", "type": "quantitative"}, "y2": {"field": "p75"}}},
    {"mark": {"type": "point", "style": "row", "filled": true, "size": 70, "opacity": 1}, "encoding": {
      "y": {"field": "median", "type": "quantitative"}}}
  ]
})";

// Tests that differ in the pause only, at full speed first.
using Family = std::vector<std::uint32_t>;

std::vector<Family> familiesOf(const Report& report) {
  std::map<Parameters, Family> families;
  for (const std::uint32_t test : testsThatMoved(report)) {
    Parameters alike = report.results.tests[test].parameters;
    alike.chunkWaitMs = 0;
    families[alike].push_back(test);
  }
  std::vector<Family> throttled;
  for (auto& [alike, family] : families) {
    std::stable_sort(family.begin(), family.end(), [&report](std::uint32_t a, std::uint32_t b) {
      return report.results.tests[a].parameters.chunkWaitMs <
             report.results.tests[b].parameters.chunkWaitMs;
    });
    const bool hasFullSpeed = report.results.tests[family.front()].parameters.chunkWaitMs == 0;
    const bool hasPauses = report.results.tests[family.back()].parameters.chunkWaitMs > 0;
    if (hasFullSpeed && hasPauses) throttled.push_back(family);
  }
  return throttled;
}

// Mean of the copy speed percentages of each test's rows.
std::vector<double> percentages(const Report& report) {
  std::vector<double> sums(report.tests.size());
  RowCursor cursor(report.results, Unpacking::nothing);
  while (cursor.next()) {
    if (cursor.row().moved)
      sums[cursor.row().test] += static_cast<double>(cursor.row().speedPercent);
  }
  for (std::size_t i = 0; i < sums.size(); ++i) {
    if (report.tests[i].mibPerSecond)
      sums[i] /= static_cast<double>(report.tests[i].mibPerSecond->count);
  }
  return sums;
}

void addFamily(ChartTable& table, const Report& report, const Family& family,
               const std::vector<double>& percent) {
  const double full = report.tests[family.front()].mibPerSecond->median;
  for (const std::uint32_t test : family) {
    const ResultTest& known = report.results.tests[test];
    const Spread& speed = *report.tests[test].mibPerSecond;
    table.add({known.name, report.results.tests[family.front()].name,
               interfaceOf(known.parameters.method),
               static_cast<double>(known.parameters.chunkWaitMs), percent[test], speed.p25,
               speed.median, speed.p75, full * percent[test] / 100.0});
  }
}

}  // namespace

ChartSection throttlingSection(const Report& report) {
  ChartSection section{"throttling",
                       "Throttling",
                       "The copy speed setting is the share of a transfer's time that was no "
                       "pause, mean over the rows of a "
                       "test. Points are medians of rows with their quartiles; the dashed line is "
                       "what to expect: the "
                       "median of the same test without pauses, times the setting. A point below "
                       "its line moved data "
                       "more slowly between its pauses than at full speed.",
                       {},
                       "No test with pauses after chunks has a counterpart without."};
  const std::vector<Family> families = familiesOf(report);
  if (families.empty()) return section;
  ChartTable table({{"test", "Test", ColumnKind::text},
                    {"series", "Full speed", ColumnKind::text},
                    {"interface", "Interface", ColumnKind::text},
                    {"pause", "Pause ms", ColumnKind::number},
                    {"percent", "Setting %", ColumnKind::number},
                    {"p25", "25 % MiB/s", ColumnKind::number},
                    {"median", "Measured MiB/s", ColumnKind::number},
                    {"p75", "75 % MiB/s", ColumnKind::number},
                    {"expected", "Expected MiB/s", ColumnKind::number}});
  const std::vector<double> percent = percentages(report);
  for (const Family& family : families) addFamily(table, report, family, percent);
  Json drawing = jsonFrom(kDrawing);
  drawing["encoding"]["color"] = interfaceChannel("interface");
  section.charts.push_back({"throttling-speed", "Speed over the copy speed setting, MiB/s",
                            jsonTextOf(drawing), table, ""});
  return section;
}

}  // namespace marrowbench::ctl
