#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/fleet/recipe.h"
#include "marrowctl/main/fleet_options.h"
#include "marrowctl/support/host_list.h"
#include "marrowctl/support/suggestion.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kName = "fleet recipe";

struct RecipeCommand {
  std::string engine;
  std::string hostList;
  RecipeOptions recipe;
};

std::string listOfEngines() {
  std::string list;
  for (const std::string_view name : engineNames()) {
    if (!list.empty()) list += ", ";
    list += name;
  }
  return list;
}

Outcome runRecipe(RecipeCommand command) {
  HostList hosts = readHostList(command.hostList);
  if (hosts.isUnreadable) return impossible(kName, hosts.problem);
  if (!hosts.problem.empty()) return wrongUsageOf(kName, "--hosts: " + hosts.problem);
  command.recipe.hosts = std::move(hosts.names);
  const Recipe recipe = makeRecipe(*engineNamed(command.engine), command.recipe);
  if (!recipe.problem.empty()) return wrongUsageOf(kName, recipe.problem);
  return {done, recipe.text, ""};
}

std::string unknownEngine(const std::string& name) {
  const std::vector<std::string_view> names = engineNames();
  const std::string meant = didYouMean(name, names);
  if (!meant.empty()) return "unknown engine " + printable(name) + meant;
  std::string all;
  for (const std::string_view known : names) all.append(all.empty() ? "" : ", ").append(known);
  return "unknown engine " + printable(name) + "; there are " + all;
}

}  // namespace

Command readRecipe(const Subcommand& self, Arguments arguments) {
  RecipeCommand command;
  RecipeOptions& recipe = command.recipe;
  OptionSet options(self, " ENGINE");
  options.text("--hosts", command.hostList, "LIST",
               "Clients: a file of names, or names as c1,c[02-10]");
  addControlFolder(options, recipe.folder);
  options.duration("--give-up", recipe.giveUp,
                   "Clients stop when no settings file has come for so long: 90s, 15m, 2h, 1d");
  options.text("--marrowctl", recipe.program, "PATH",
               "marrowctl on the clients; default: found in PATH");
  options.text("--image", recipe.image, "IMAGE",
               "kubernetes: what holds marrowctl and marrowbench");
  options.text("--mount", recipe.mount, "DIR",
               "kubernetes: folder that the pods get; default: that of --control");
  options.text("--claim", recipe.claim, "NAME",
               "kubernetes: volume claim behind it; default: the node's own folder");
  const std::string footer =
      "ENGINE is one of " + listOfEngines() +
      ".\n\nExample: what do I type to arm fifty clients by pdsh?\n"
      "  marrowctl fleet recipe pdsh --hosts 'c[01-50]' --control . --run monday\n";
  options.footer(footer.c_str());
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (options.words.empty()) return options.wrong("name an engine: " + listOfEngines());
  if (options.words.size() > 1) return options.wrong("too much: " + options.words[1]);
  command.engine = options.words[0];
  const auto engine = engineNamed(command.engine);
  if (!engine) return options.wrong(unknownEngine(command.engine));
  if (command.hostList.empty()) return options.wrong("--hosts: name the clients");
  if (const auto outcome = problemOf(options, recipe.folder)) return *outcome;
  const bool isForPods = !(recipe.image + recipe.mount + recipe.claim).empty();
  if (isForPods && *engine != Engine::kubernetes)
    return options.wrong("--image, --mount and --claim are for kubernetes");
  if (!recipe.mount.empty()) recipe.mount = fromTheRoot(recipe.mount);
  return FleetCommand{[command] { return runRecipe(command); }};
}

}  // namespace marrowbench::ctl
