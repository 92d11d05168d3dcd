#ifndef MARROWBENCH_MARROWCTL_PLAN_DONE_MARKERS_H
#define MARROWBENCH_MARROWCTL_PLAN_DONE_MARKERS_H

#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// True when clients leave a marker at the end of the file: one of its tests asks for it, or it has
/// no test.
[[nodiscard]] bool leavesMarker(const PlannedFile& file);

}  // namespace marrowbench::ctl

#endif
