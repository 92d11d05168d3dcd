#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "marrowctl/main/fleet_options.h"
#include "marrowctl/main/fleet_run.h"

namespace marrowbench::ctl {
namespace {

// Those by which clients are armed within seconds: jobs of the others may be queued for hours.
constexpr std::array<std::string_view, 6> kEngines = {"clush",    "pdsh",    "ssh",
                                                      "parallel", "ansible", "srun"};
constexpr std::int64_t kGiveUpSeconds = 900;

std::string firstGiven(const FleetRunOptions& values) {
  const RecipeOptions& recipe = values.recipe;
  if (!values.hostList.empty()) return "--hosts";
  if (!recipe.folder.control.empty()) return "--control";
  if (!recipe.folder.run.empty()) return "--run";
  if (recipe.giveUp) return "--give-up";
  if (values.timeoutSeconds) return "--timeout";
  return {};
}

}  // namespace

void addFleetRunOptions(OptionSet& options, FleetRunOptions& values) {
  options.choice("--via", values.engine, "ENGINE", "Run it on many clients, armed by this engine",
                 {kEngines.begin(), kEngines.end()});
  options.text("--hosts", values.hostList, "LIST",
               "Its clients: a file of names, or names as c1,c[02-10]");
  options.text("--control", values.recipe.folder.control, "DIR",
               "Folder on the share that all clients see");
  options.text("--run", values.recipe.folder.run, "NAME",
               "Name of the run, a folder in that folder; default: that of the settings file");
  options.duration("--give-up", values.recipe.giveUp,
                   "Clients stop waiting when the run is not started; default: 15m");
  options.duration("--timeout", values.timeoutSeconds,
                   "Report what is there after so long: 90s, 15m, 2h, 1d");
  options.text("--marrowctl", values.recipe.program, "PATH",
               "marrowctl on the clients; default: found in PATH");
}

std::optional<Outcome> problemOf(const OptionSet& options, const RunCommand& run,
                                 FleetRunOptions& values) {
  const std::string given = firstGiven(values);
  if (values.engine.empty()) {
    if (given.empty()) return std::nullopt;
    return options.wrong(given + " is for a run of many clients: name an engine by --via");
  }
  if (values.hostList.empty()) return options.wrong("--hosts: name the clients");
  if (!run.program.empty()) {
    return options.wrong(
        "--marrowbench is for a run of this machine: clients find the program beside marrowctl");
  }
  ControlFolder& folder = values.recipe.folder;
  if (folder.run.empty()) folder.run = std::filesystem::path(run.file).stem().string();
  if (!values.recipe.giveUp) values.recipe.giveUp = kGiveUpSeconds;
  return problemOf(options, folder);
}

}  // namespace marrowbench::ctl
