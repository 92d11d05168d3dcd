#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_CHART_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_CHART_H

#include <cstddef>
#include <string>
#include <vector>

#include "marrowctl/report/page/chart_table.h"
#include "marrowctl/report/report.h"

/// The charts of a page, each a drawing for Vega-Lite and the table that it is drawn from.
namespace marrowbench::ctl {

/// More marks make no chart clearer, and every page larger.
inline constexpr std::size_t kMostMarks = 5000;

struct Chart {
  std::string id;       ///< unique in a page: letters, digits and hyphens
  std::string title;    ///< what it shows, with the unit
  std::string drawing;  ///< JSON, without data, width and configuration
  ChartTable table;
  std::string note;  ///< what was summarised or left out; empty: nothing
};

/// How the charts of a section stand where the page is wide enough for two.
enum class Layout {
  row,    ///< one below the other
  grid,   ///< side by side
  small,  ///< side by side, on paper too
};

/// Charts that answer one question.
struct ChartSection {
  std::string id, title;
  std::string legend;  ///< how to read the charts and how each figure is computed
  std::vector<Chart> charts;
  std::string absence;  ///< why there is none; empty: nobody would look for them
  Layout layout = Layout::row;
};

[[nodiscard]] ChartSection clientSection(const Report& report);
[[nodiscard]] ChartSection timelineSection(const Report& report);
[[nodiscard]] ChartSection throughputSection(const Report& report);
[[nodiscard]] ChartSection scalingSection(const Report& report);
[[nodiscard]] ChartSection interfaceSection(const Report& report);
[[nodiscard]] ChartSection throttlingSection(const Report& report);
[[nodiscard]] ChartSection firstIterationSection(const Report& report);
[[nodiscard]] ChartSection troubleSection(const Report& report);

}  // namespace marrowbench::ctl

#endif
