#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/speed_pairs.h"
#include "marrowctl/report/statistics.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostTests = 60;

// Speeds of a test's rows.
struct Speeds {
  std::vector<double> first, later;
};

std::vector<Speeds> speedsOf(const Report& report) {
  std::vector<Speeds> speeds(report.tests.size());
  RowCursor cursor(report.results, Unpacking::nothing);
  while (cursor.next()) {
    const ResultRow& row = cursor.row();
    if (!row.moved) continue;
    Speeds& test = speeds[row.test];
    (row.iteration == 0 ? test.first : test.later).push_back(mibPerSecond(row));
  }
  return speeds;
}

ChartTable tableOf(const Report& report) {
  ChartTable table({{"test", "Test", ColumnKind::text},
                    {"first", "First iteration, MiB/s", ColumnKind::number},
                    {"later", "Later iterations, MiB/s", ColumnKind::number},
                    {"ratio", "First / later", ColumnKind::number}});
  std::vector<Speeds> speeds = speedsOf(report);
  for (std::size_t i = 0; i < report.tests.size() && table.rows() < kMostTests; ++i) {
    if (speeds[i].first.empty() || speeds[i].later.empty()) continue;
    const double first = median(speeds[i].first), later = median(speeds[i].later);
    table.add({report.results.tests[i].name, first, later, first / later});
  }
  return table;
}

}  // namespace

ChartSection firstIterationSection(const Report& report) {
  ChartSection section{"first-iteration",
                       "First iteration against later ones",
                       "Medians of the rows of all clients. A first iteration that is slower may "
                       "have opened a connection, "
                       "filled a cache or made space for files; a faster one may have met an empty "
                       "cache of writes. The "
                       "later ones are what lasts.",
                       {},
                       "No test has rows of a first and of a later iteration."};
  const ChartTable table = tableOf(report);
  if (table.rows() == 0) return section;
  section.charts.push_back(
      {"first-iteration-speed", "Median speed, MiB/s",
       speedPairsDrawing({"first", "first iteration", "#d55e00"},
                         {"later", "later iterations", "#0072b2"}, table.rows()),
       table,
       table.rows() == kMostTests ? fmt::format("Only the first {} tests are shown.", kMostTests)
                                  : ""});
  return section;
}

}  // namespace marrowbench::ctl
