#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_SHOWN_FILES_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_SHOWN_FILES_H

#include <string>
#include <vector>

#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

/// "a.csv, b.csv, c.csv and 7 more".
[[nodiscard]] std::string shownFiles(const std::vector<ResultFile>& files);

}  // namespace marrowbench::ctl

#endif
