#ifndef MARROWBENCH_MARROWCTL_MAIN_FLEET_OPTIONS_H
#define MARROWBENCH_MARROWCTL_MAIN_FLEET_OPTIONS_H

#include <optional>
#include <string>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/main/option_set.h"

/// What the commands of "marrowctl fleet" share: each has its options and what it does with them in
/// a file of its own, and hands back a FleetCommand.
namespace marrowbench::ctl {

/// Declares --control and --run, which name the folder of a run.
void addControlFolder(OptionSet& options, ControlFolder& folder);

/// What is wrong with the two; nothing: both are given and usable.
[[nodiscard]] std::optional<Outcome> problemOf(const OptionSet& options,
                                               const ControlFolder& folder);

/// The program of this name that lies beside this one, else the name, to be found in PATH.
[[nodiscard]] std::string programBeside(const std::string& name);

/// The words of the level, each with its options.
[[nodiscard]] Command readArm(const Subcommand& self, Arguments arguments);

}  // namespace marrowbench::ctl

#endif
