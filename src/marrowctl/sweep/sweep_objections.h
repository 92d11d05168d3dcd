#ifndef MARROWBENCH_MARROWCTL_SWEEP_SWEEP_OBJECTIONS_H
#define MARROWBENCH_MARROWCTL_SWEEP_SWEEP_OBJECTIONS_H

#include <string>
#include <vector>

#include "marrowctl/check/finding.h"
#include "marrowctl/sweep/sweep.h"

namespace marrowbench::ctl {

/// What a strict check would not let pass in the files of a sweep if they stood at their places:
/// mostly what only a look at this machine shows, a source that is not there, say. Of each kind the
/// first finding. Nothing is written.
///
/// @param sweep       one that was not refused; on the standard output: of the current folder
/// @param neighbours  those of the sweep's options
[[nodiscard]] std::vector<Finding> objectionsTo(const SweepResult& sweep,
                                                const std::vector<std::string>& neighbours);

}  // namespace marrowbench::ctl

#endif
