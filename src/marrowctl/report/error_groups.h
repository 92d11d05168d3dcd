#ifndef MARROWBENCH_MARROWCTL_REPORT_ERROR_GROUPS_H
#define MARROWBENCH_MARROWCTL_REPORT_ERROR_GROUPS_H

#include <vector>

#include "marrowctl/report/report.h"

namespace marrowbench::ctl {

/// The error rows by their text, with "[host]", "[iter]" and "[date]" where paths have them; the
/// most frequent first.
[[nodiscard]] std::vector<ErrorGroup> errorGroups(const ResultSet& set);

}  // namespace marrowbench::ctl

#endif
