#ifndef MARROWBENCH_MARROWCTL_PLAN_EXPANSION_H
#define MARROWBENCH_MARROWCTL_PLAN_EXPANSION_H

#include <cstdint>
#include <string>

#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// The four paths of one iteration on one client; empty source or dest: memory.
struct ExpandedPaths {
  std::string source, dest, log, table;
};

/// The paths as ClientPaths tells them.
///
/// @param host       name of the client, cut at its first "." as the program does
/// @param iteration  from 0
[[nodiscard]] ExpandedPaths expandPaths(const PlannedFile& file, const PlannedTest& test,
                                        const std::string& host, std::int32_t iteration);

/// Where the client leaves its done marker for the file.
[[nodiscard]] std::string markerOf(const PlannedFile& file, const std::string& host);

/// True when the template names the placeholder, in any case: "[host]", say.
[[nodiscard]] bool holds(const std::string& pathTemplate, const std::string& placeholder);

}  // namespace marrowbench::ctl

#endif
