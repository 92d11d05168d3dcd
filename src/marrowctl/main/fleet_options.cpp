#include "marrowctl/main/fleet_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/support/suggestion.h"

namespace marrowbench::ctl {
namespace {

// Each under its whole name, "fleet arm", by which help and messages call it.
constexpr std::array<Subcommand, 0> kActions = {};

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
         "  --version   Show the version\n";
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

void addControlFolder(OptionSet& options, ControlFolder& folder) {
  options.text("--control", folder.control, "DIR", "Folder on the share that all clients see");
  options.text("--run", folder.run, "NAME", "Name of the run: a folder in that folder");
}

std::optional<Outcome> problemOf(const OptionSet& options, const ControlFolder& folder) {
  if (folder.control.empty()) return options.wrong("--control: name a folder on the share");
  if (folder.run.empty()) return options.wrong("--run: give the run a name");
  const std::string problem = problemOfRunName(folder.run);
  if (problem.empty()) return std::nullopt;
  return options.wrong("--run: " + problem);
}

}  // namespace marrowbench::ctl
