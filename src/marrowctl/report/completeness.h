#ifndef MARROWBENCH_MARROWCTL_REPORT_COMPLETENESS_H
#define MARROWBENCH_MARROWCTL_REPORT_COMPLETENESS_H

#include <string>
#include <vector>

#include "marrowctl/report/make_report.h"
#include "marrowctl/report/report.h"

namespace marrowbench::ctl {

/// Counts clients and rows against those that there should be, and judges the whole.
void judge(Report& report, const ReportOptions& options);

/// The names behind "done__" in a folder of done markers, in their order; nothing where it can't be
/// read.
[[nodiscard]] std::vector<std::string> markersIn(const std::string& folder);

/// At most `most` names, and how many more there are: "c01, c02 and 5 more".
[[nodiscard]] std::string shownNames(const std::vector<std::string>& names, std::size_t most = 8);

}  // namespace marrowbench::ctl

#endif
