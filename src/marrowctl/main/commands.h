#ifndef MARROWBENCH_MARROWCTL_MAIN_COMMANDS_H
#define MARROWBENCH_MARROWCTL_MAIN_COMMANDS_H

#include <string>

#include "marrowctl/main/command_line.h"
#include "marrowctl/main/outcome.h"

namespace marrowbench::ctl {

/// Plans and checks settings files, or explains a finding. Reads the standard input where a file is
/// "-"; writes nothing.
[[nodiscard]] Outcome runCheck(const CheckCommand& command);

/// Writes settings files, or puts one into the outcome's output.
[[nodiscard]] Outcome runSweep(const SweepCommand& command);

/// Checks a settings file, runs the program with it and judges the rows that it added. Shows
/// progress and warnings on the standard error.
///
/// @param ownPath  as marrowctl was called
[[nodiscard]] Outcome runRun(const RunCommand& command, const std::string& ownPath);

/// Reads tables and judges them. Writes tidy rows to the standard output itself: they may be more
/// than fits the memory. Shows progress on the standard error.
[[nodiscard]] Outcome runReport(const ReportCommand& command);

/// Reads two sets of tables and compares their tests.
[[nodiscard]] Outcome runCompare(const CompareCommand& command);

}  // namespace marrowbench::ctl

#endif
