#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_H

#include <string>
#include <string_view>

#include "marrowctl/report/report.h"

namespace marrowbench::ctl {

/// The page of a report: the verdict, the figures of every test, charts and their tables. Texts of
/// tables stand in it as text.
///
/// @param program  who made it: "marrowctl 9.1.01", say
/// @pre canMakePages()
[[nodiscard]] std::string pageOf(const Report& report, std::string_view program);

}  // namespace marrowbench::ctl

#endif
