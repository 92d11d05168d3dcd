#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "marrowctl/report/page/active_clients.h"
#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostPoints = 150;  // of a test
constexpr std::size_t kMostTests = 4;     // with two lines each more are a thicket

constexpr std::string_view kTogether = R"({
  "height": 260,
  "encoding": {"x": {"field": "clients", "type": "quantitative", "title": "Active clients",
    "axis": {"tickMinStep": 1, "format": "d"}, "scale": {"zero": true}}},
  "layer": [
    {"mark": {"type": "line", "style": "guide", "strokeDash": [4, 4], "strokeWidth": 1.3, "opacity": 0.75}, "encoding": {
      "y": {"field": "ideal", "type": "quantitative", "title": "MiB/s, all clients together"}}},
    {"mark": {"type": "line", "style": "guide", "strokeWidth": 2}, "encoding": {
      "y": {"field": "together", "type": "quantitative"}}},
    {"mark": {"type": "point", "style": "row", "filled": true, "size": 45, "opacity": 1}, "encoding": {
      "y": {"field": "together", "type": "quantitative"}}}
  ]
})";

constexpr std::string_view kEach = R"({
  "height": 220,
  "transform": [{"filter": "datum.each != null"}],
  "encoding": {
    "x": {"field": "clients", "type": "quantitative", "title": "Active clients",
      "axis": {"tickMinStep": 1, "format": "d"}, "scale": {"zero": true}},
    "y": {"field": "each", "type": "quantitative", "title": "MiB/s of a client, median"}
  },
  "layer": [
    {"mark": {"type": "line", "style": "guide", "strokeWidth": 2}},
    {"mark": {"type": "point", "style": "row", "filled": true, "size": 45, "opacity": 1}, "encoding": {}}
  ]
})";

using Points = std::vector<std::vector<ActivePoint>>;

// Tests in which the number of clients changed, the few with most numbers.
std::vector<std::uint32_t> testsToShow(const Points& points) {
  std::vector<std::uint32_t> tests;
  for (std::uint32_t i = 0; i < points.size(); ++i) {
    if (points[i].size() > 1) tests.push_back(i);
  }
  std::stable_sort(tests.begin(), tests.end(), [&points](std::uint32_t a, std::uint32_t b) {
    return points[a].size() > points[b].size();
  });
  tests.resize(std::min(tests.size(), kMostTests));
  std::sort(tests.begin(), tests.end());
  return tests;
}

void addPoints(ChartTable& table, const std::string& test, const std::vector<ActivePoint>& points) {
  double idealOfOne = 0;
  for (const ActivePoint& point : points) {
    idealOfOne = std::max(idealOfOne, point.mibPerSecond / static_cast<double>(point.clients));
  }
  const std::size_t step = (points.size() + kMostPoints - 1) / kMostPoints;
  for (std::size_t i = 0; i < points.size(); i += step) {
    const ActivePoint& point = points[i];
    const auto clients = static_cast<double>(point.clients);
    table.add({test, clients, point.seconds, point.mibPerSecond, idealOfOne * clients,
               point.medianMibPerSecond > 0 ? ChartTable::Cell(point.medianMibPerSecond)
                                            : ChartTable::Cell()});
  }
}

ChartTable tableOf(const Report& report, const Points& points,
                   const std::vector<std::uint32_t>& tests) {
  ChartTable table({{"test", "Test", ColumnKind::text},
                    {"clients", "Active clients", ColumnKind::number},
                    {"seconds", "For seconds", ColumnKind::number},
                    {"together", "MiB/s together", ColumnKind::number},
                    {"ideal", "Ideal MiB/s", ColumnKind::number},
                    {"each", "MiB/s of a client, median", ColumnKind::number}});
  for (const std::uint32_t test : tests) {
    addPoints(table, report.results.tests[test].name, points[test]);
  }
  return table;
}

std::string coloured(std::string_view drawing, const ColourKey& key) {
  Json chart = jsonFrom(drawing);
  chart["encoding"]["color"] = key.channel("test");
  return jsonTextOf(chart);
}

}  // namespace

ChartSection scalingSection(const Report& report) {
  ChartSection section{
      "scaling",
      "Scaling",
      "A client is active from a row's start to its end, and in pauses of up to 10 s between two "
      "rows. "
      "For each number of active clients that lasted for a second or more: what all moved together "
      "in "
      "that time (line), and the median of the rows that were half done then. The dashed line is "
      "the "
      "ideal: the best speed per client at any number, times the clients.",
      {},
      "In no test did the number of active clients change, so nothing tells how speed grows with "
      "clients. Tables of runs with different numbers of clients, read with --all-runs, do."};
  const Points points = activePointsOf(report);
  const std::vector<std::uint32_t> tests = testsToShow(points);
  if (tests.empty()) return section;
  const ColourKey key(report, tests);
  const ChartTable table = tableOf(report, points, tests);
  section.charts.push_back({"scaling-together", "All active clients together, MiB/s",
                            coloured(kTogether, key), table, ""});
  section.charts.push_back({"scaling-each", "Each client, MiB/s", coloured(kEach, key), table, ""});
  if (tests.size() == kMostTests)
    section.legend += " At most four tests are shown: those with most numbers of active clients.";
  return section;
}

}  // namespace marrowbench::ctl
