#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_COMPARE_PAGE_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_COMPARE_PAGE_H

#include <string>
#include <string_view>

#include "marrowctl/report/compare.h"
#include "marrowctl/report/page/chart.h"
#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

/// Two runs and what became of their tests.
struct ComparedRuns {
  const Comparison& comparison;
  const ResultSet& before;
  const ResultSet& after;
};

/// The page of a comparison: the verdict, ratios and speeds of the tests as charts, and all
/// figures.
///
/// @param program  who made it: "marrowctl 9.1.01", say
/// @pre canMakePages()
[[nodiscard]] std::string comparePageOf(const ComparedRuns& runs, std::string_view program);

/// The new speed of each test as a share of the old one, with its interval.
[[nodiscard]] ChartSection ratioSection(const Comparison& comparison);

/// The median of each test in both runs.
[[nodiscard]] ChartSection mediansSection(const Comparison& comparison);

}  // namespace marrowbench::ctl

#endif
