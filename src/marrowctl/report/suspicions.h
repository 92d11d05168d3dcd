#ifndef MARROWBENCH_MARROWCTL_REPORT_SUSPICIONS_H
#define MARROWBENCH_MARROWCTL_REPORT_SUSPICIONS_H

#include <optional>
#include <vector>

#include "marrowctl/report/report.h"
#include "marrowctl/report/tally.h"

namespace marrowbench::ctl {

/// What makes figures doubtful, each with its reason and what to do about it.
///
/// @param firsts              of each test
/// @param linkBytesPerSecond  of a client's link; nothing: not known
[[nodiscard]] std::vector<Suspicion> suspicionsOf(const Report& report,
                                                  const std::vector<FirstIteration>& firsts,
                                                  std::optional<double> linkBytesPerSecond);

}  // namespace marrowbench::ctl

#endif
