#ifndef MARROWBENCH_MARROWCTL_MAIN_COMMANDS_H
#define MARROWBENCH_MARROWCTL_MAIN_COMMANDS_H

#include "marrowctl/main/command_line.h"
#include "marrowctl/main/outcome.h"

namespace marrowbench::ctl {

/// Plans and checks settings files, or explains a finding. Reads the standard input where a file is
/// "-"; writes nothing.
[[nodiscard]] Outcome runCheck(const CheckCommand& command);

/// Writes settings files, or puts one into the outcome's output.
[[nodiscard]] Outcome runSweep(const SweepCommand& command);

}  // namespace marrowbench::ctl

#endif
