#include <fmt/format.h>

#include "marrowctl/report/page/compare_page.h"
#include "marrowctl/report/page/speed_pairs.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostTests = 100;

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
  const std::size_t all = comparison.tests.size();
  section.charts.push_back(
      {"medians-tests", "Median speed by test, MiB/s",
       speedPairsDrawing({"old", "old", "#8a8f98"}, {"new", "new", "#0072b2"}, table.rows()), table,
       table.rows() == all ? "" : fmt::format("{} of {} tests are shown.", table.rows(), all)});
  return section;
}

}  // namespace marrowbench::ctl
