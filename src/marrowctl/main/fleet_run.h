#ifndef MARROWBENCH_MARROWCTL_MAIN_FLEET_RUN_H
#define MARROWBENCH_MARROWCTL_MAIN_FLEET_RUN_H

#include <cstdint>
#include <optional>
#include <string>

#include "marrowctl/fleet/recipe.h"
#include "marrowctl/main/command_line.h"
#include "marrowctl/main/option_set.h"

/// "marrowctl run --via": a run of many clients in one command.
namespace marrowbench::ctl {

/// Its options as they are typed.
struct FleetRunOptions {
  std::string engine;  ///< empty: the run is one of this machine
  std::string hostList;
  RecipeOptions recipe;                        ///< its hosts are read later
  std::optional<std::int64_t> timeoutSeconds;  ///< of watching
};

/// Declares them.
void addFleetRunOptions(OptionSet& options, FleetRunOptions& values);

/// What is wrong with them; nothing: they are usable, or not given at all. Gives a run without a
/// name that of its settings file.
[[nodiscard]] std::optional<Outcome> problemOf(const OptionSet& options, const RunCommand& run,
                                               FleetRunOptions& values);

/// Checks the settings file and the share, has the engine arm the clients, publishes, looks on to
/// the end and reports. Each step is said before it is done, as one would type it. All but the
/// report goes to the standard error.
[[nodiscard]] Outcome runFleet(const RunCommand& run, FleetRunOptions values);

}  // namespace marrowbench::ctl

#endif
