#ifndef MARROWBENCH_MARROWCTL_MAIN_FLEET_OPTIONS_H
#define MARROWBENCH_MARROWCTL_MAIN_FLEET_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/fleet/roll_call.h"
#include "marrowctl/main/option_set.h"

/// What the commands of "marrowctl fleet" share: each has its options and what it does with them in
/// a file of its own, and hands back a FleetCommand.
namespace marrowbench::ctl {

/// The folder's path from the root on: names of other files in messages, and the program's own path
/// in its rows, tell where the share is.
[[nodiscard]] std::string fromTheRoot(const std::string& folder);

/// Declares --control and --run, which name the folder of a run.
void addControlFolder(OptionSet& options, ControlFolder& folder);

/// Takes the folder's path from the root, and says what is wrong with the two; nothing: both are
/// given and usable.
[[nodiscard]] std::optional<Outcome> problemOf(const OptionSet& options, ControlFolder& folder);

/// Which clients a command is about, as options tell it.
struct WantedOptions {
  std::string hostList;
  std::int64_t clients = 0;
};

/// Declares --hosts and --clients, of which one is given.
void addWanted(OptionSet& options, WantedOptions& values);

/// What is wrong where none is given.
[[nodiscard]] std::optional<Outcome> requireWanted(const OptionSet& options,
                                                   const WantedOptions& values);

/// Reads the list. @return what is wrong with it
[[nodiscard]] std::optional<Outcome> takeWanted(const Subcommand& self, const WantedOptions& values,
                                                Wanted& wanted);

/// The program of this name that lies beside this one, else the name, to be found in PATH.
[[nodiscard]] std::string programBeside(const std::string& name);

/// The words of the level, each with its options.
[[nodiscard]] Command readArm(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readPublish(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readWatch(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readConduct(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readProbe(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readRecipe(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readUnlock(const Subcommand& self, Arguments arguments);

}  // namespace marrowbench::ctl

#endif
