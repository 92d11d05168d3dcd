#include "marrowctl/main/fleet_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "marrowctl/support/host_list.h"
#include "marrowctl/support/suggestion.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

// Each under its whole name, "fleet arm", by which help and messages call it.
constexpr std::array kActions = {
    Subcommand{"fleet arm", "Make this machine a client that waits for a run", readArm},
    Subcommand{"fleet publish", "Start all clients that wait, in one minute", readPublish},
    Subcommand{"fleet watch", "Show how far a run is, until it is complete", readWatch},
    Subcommand{"fleet conduct", "Start one phase after the other, each for all clients together",
               readConduct},
    Subcommand{"fleet probe", "Say what a share does with files, locks and times", readProbe},
    Subcommand{"fleet recipe", "Print what arms all clients through an engine you have",
               readRecipe},
    Subcommand{"fleet unlock", "Show the lock of a results table, and remove an old one",
               readUnlock},
};

std::string_view wordOf(const Subcommand& action) {
  const std::string_view name = action.name;
  return name.substr(name.find(' ') + 1);
}

std::string help() {
  std::string text =
      "Usage: marrowctl fleet COMMAND [OPTIONS]\n\n"
      "Makes many clients start one run together, through a folder on their share.\n\n"
      "Commands:\n";
  for (const Subcommand& action : kActions) {
    text += fmt::format("  {:<9}{}\n", wordOf(action), action.purpose);
  }
  return text +
         "\nOptions:\n"
         "  -h, --help  Show this help; behind a command, that of the command\n"
         "  --version   Show the version\n\n"
         "Example: this machine takes part in a run called monday\n"
         "  marrowctl fleet arm --control . --run monday --detach --give-up 2h\n";
}

Outcome unknownWord(const Subcommand& self, std::string_view word) {
  std::vector<std::string_view> names = {"--help", "--version"};
  for (const Subcommand& action : kActions) names.push_back(wordOf(action));
  const char* const kind = word.starts_with("-") ? "option" : "command";
  return wrongUsageOf(self.name,
                      fmt::format("unknown {} {}{}", kind, word, didYouMean(word, names)));
}

}  // namespace

Command readFleet(const Subcommand& self, Arguments arguments) {
  if (arguments.empty()) return Outcome{wrongUsage, "", help()};
  const std::string_view word = arguments.front();
  if (word == "--help" || word == "-h") return Outcome{done, help(), ""};
  if (word == "--version") return Outcome{done, versionText(), ""};
  const auto* const found =
      std::find_if(kActions.begin(), kActions.end(),
                   [word](const Subcommand& each) { return word == wordOf(each); });
  if (found == kActions.end()) return unknownWord(self, word);
  return found->read(*found, arguments.subspan(1));
}

std::string fromTheRoot(const std::string& folder) {
  std::error_code code;
  const fs::path path = folder == "." ? fs::current_path(code) : fs::absolute(folder, code);
  return code ? folder : path.string();
}

void addControlFolder(OptionSet& options, ControlFolder& folder) {
  options.text("--control", folder.control, "DIR", "Folder on the share that all clients see");
  options.text("--run", folder.run, "NAME", "Name of the run: a folder in that folder");
}

std::optional<Outcome> problemOf(const OptionSet& options, ControlFolder& folder) {
  if (folder.control.empty()) return options.wrong("--control: name a folder on the share");
  if (folder.run.empty()) return options.wrong("--run: give the run a name");
  const std::string problem = problemOfRunName(folder.run);
  if (!problem.empty()) return options.wrong("--run: " + problem);
  folder.control = fromTheRoot(folder.control);
  return std::nullopt;
}

void addWanted(OptionSet& options, WantedOptions& values) {
  options.text("--hosts", values.hostList, "LIST",
               "The clients: a file of names, or names as c1,c[02-10]");
  options.number("--clients", values.clients, 1, kMostClients, "N",
                 "How many clients there are, whatever their names");
  options.exclude("--clients", "--hosts");
}

std::optional<Outcome> requireWanted(const OptionSet& options, const WantedOptions& values) {
  if (values.clients > 0 || !values.hostList.empty()) return std::nullopt;
  return options.wrong("say which clients: --hosts LIST, or how many: --clients N");
}

std::optional<Outcome> takeWanted(const Subcommand& self, const WantedOptions& values,
                                  Wanted& wanted) {
  wanted.clients = values.clients;
  if (values.hostList.empty()) return std::nullopt;
  const HostList list = readHostList(values.hostList);
  if (list.isUnreadable) return impossible(self.name, list.problem);
  if (!list.problem.empty()) return wrongUsageOf(self.name, "--hosts: " + list.problem);
  std::set<std::string> known;
  for (const std::string& name : list.names) {
    std::string host(hostNameFrom(name).view());
    if (known.insert(host).second) wanted.hosts.push_back(std::move(host));
  }
  return std::nullopt;
}

std::string programBeside(const std::string& name) {
  std::error_code code;
  const fs::path beside = fs::read_symlink("/proc/self/exe", code).replace_filename(name);
  // Systems without such a link, and those where the other program lies elsewhere.
  if (code || !fs::is_regular_file(beside, code)) return name;
  return beside.string();
}

}  // namespace marrowbench::ctl
