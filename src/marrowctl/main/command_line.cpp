#include "marrowctl/main/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

#include "marrowctl/main/option_set.h"
#include "marrowctl/support/exit_status.h"
#include "marrowctl/support/suggestion.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kVersion = "marrowctl " MARROWCTL_VERSION;

// Not by CLI11, which reads "010" as eight.
std::int64_t numberFrom(const std::string& flag, const std::string& text, std::int64_t least,
                        std::int64_t most) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, code] = std::from_chars(text.data(), end, number);
  if (code == std::errc() && stop == end && number >= least && number <= most) return number;
  throw CLI::ValidationError(flag, fmt::format("{} is no number from {} to {}", text, least, most));
}

// A script's variable that is not set must not look as if the option were not given.
std::string refuseEmpty(const std::string& text) { return text.empty() ? "nothing is given" : ""; }

}  // namespace

// An App for each subcommand, and none around them: inside of one, a file whose name is that of a
// subcommand would start that subcommand, also behind "--".
struct OptionSet::Parts {
  CLI::App app;
  std::string name;
  const char* arguments = "";

  CLI::Option* add(const char* flag, std::string& value, const char* type, const char* help) {
    return app.add_option(flag, value, help)->type_name(type)->check(refuseEmpty);
  }

  [[nodiscard]] std::string unknown(const std::string& word) const {
    std::vector<std::string> options;
    for (const CLI::Option* option : app.get_options()) {
      for (const std::string& each : option->get_lnames()) options.push_back("--" + each);
    }
    const std::vector<std::string_view> views(options.begin(), options.end());
    const std::string flag = word.substr(0, word.find('='));
    return fmt::format("unknown option {}{}", flag, didYouMean(flag, views));
  }

  [[nodiscard]] std::string help() const {
    constexpr std::string_view kOptions = "[OPTIONS]";
    std::string text = app.help();
    return text.insert(text.find(kOptions) + kOptions.size(), arguments);
  }
};

OptionSet::OptionSet(const Subcommand& subcommand, const char* arguments)
    : parts(std::make_unique<Parts>()) {
  parts->name = subcommand.name;
  parts->arguments = arguments;
  CLI::App& app = parts->app;
  app.description(subcommand.purpose);
  app.name("marrowctl " + parts->name);
  app.set_help_flag("-h,--help", "Show this help");
  app.set_version_flag("--version", kVersion, "Show the version");
  // Names of files, which as an argument of its own CLI11 takes for lists where they have brackets;
  // and unknown options, which are told with a suggestion.
  app.allow_extras();
}

OptionSet::~OptionSet() = default;

void OptionSet::flag(const char* name, bool& value, const char* help) {
  parts->app.add_flag(name, value, help);
}

void OptionSet::text(const char* name, std::string& value, const char* type, const char* help) {
  parts->add(name, value, type, help);
}

void OptionSet::choice(const char* name, std::string& value, const char* type, const char* help,
                       std::vector<std::string> choices) {
  parts->add(name, value, type, help)->check(CLI::IsMember(std::move(choices)));
}

void OptionSet::names(const char* name, std::vector<std::string>& values, const char* type,
                      const char* help) {
  // One name for each flag: what follows is a file.
  parts->app.add_option(name, values, help)
      ->type_name(type)
      ->allow_extra_args(false)
      ->take_all()
      ->check(refuseEmpty);
}

void OptionSet::number(const char* name, std::int64_t& value, std::int64_t least, std::int64_t most,
                       const char* type, const char* help) {
  parts->app
      .add_option_function<std::string>(
          name,
          [=, &value](const std::string& text) { value = numberFrom(name, text, least, most); },
          help)
      ->type_name(type);
}

void OptionSet::duration(const char* name, std::optional<std::int64_t>& seconds, const char* help) {
  parts->app
      .add_option_function<std::string>(
          name,
          [=, &seconds](const std::string& text) {
            seconds = secondsOf(text);
            if (!seconds) {
              throw CLI::ValidationError(
                  name, fmt::format("{} is no time such as 90s, 15m, 2h or 1d", text));
            }
          },
          help)
      ->type_name("DURATION");
}

void OptionSet::exclude(const char* name, const char* other) {
  parts->app.get_option(name)->excludes(parts->app.get_option(other));
}

void OptionSet::footer(const char* text) { parts->app.footer(text); }

Outcome OptionSet::wrong(const std::string& problem) const {
  return wrongUsageOf(parts->name, problem);
}

std::optional<Outcome> OptionSet::parse(Arguments arguments) {
  // Not by CLI11, which tells names behind "--" as too much.
  const auto dashes = std::find(arguments.begin(), arguments.end(), std::string_view("--"));
  std::vector<std::string> reversed(arguments.begin(), dashes);
  std::reverse(reversed.begin(), reversed.end());
  try {
    parts->app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    return Outcome{done, parts->help(), ""};
  } catch (const CLI::CallForVersion&) {
    return Outcome{done, versionText(), ""};
  } catch (const CLI::ParseError& problem) {
    return wrong(problem.what());
  }
  for (const std::string& word : parts->app.remaining()) {
    if (word.starts_with('-') && word != "-") return wrong(parts->unknown(word));
    words.push_back(word);
  }
  if (dashes != arguments.end()) words.insert(words.end(), dashes + 1, arguments.end());
  return {};
}

namespace {

constexpr std::array kSubcommands = {
    Subcommand{"check", "Say what settings files will do, and what is wrong with them", readCheck},
    Subcommand{"sweep", "Write settings files that hold every combination of values", readSweep},
    Subcommand{"run", "Check a settings file, run it here with progress, and judge what came of it",
               readRun},
    Subcommand{"report", "Say what results tables hold: a verdict, figures, clean data",
               readReport},
    Subcommand{"compare", "Say which tests of two runs became faster or slower", readCompare},
    Subcommand{"fleet", "Make many clients start one run together, and watch it", readFleet},
};

std::string help() {
  std::string text =
      "Usage: marrowctl COMMAND [OPTIONS]\n\n"
      "Prepares what marrowbench measures, and judges it.\n\n"
      "Commands:\n";
  for (const Subcommand& subcommand : kSubcommands) {
    text += fmt::format("  {:<9}{}\n", subcommand.name, subcommand.purpose);
  }
  return text +
         "\nOptions:\n"
         "  -h, --help  Show this help; behind a command, that of the command\n"
         "  --version   Show the version\n\n"
         "Example: what will this file do, and what is wrong with it?\n"
         "  marrowctl check first.bst\n";
}

Outcome unknownWord(std::string_view word) {
  std::vector<std::string_view> names = {"--help", "--version"};
  for (const Subcommand& subcommand : kSubcommands) names.emplace_back(subcommand.name);
  const char* const kind = word.starts_with("-") ? "option" : "command";
  return wrongUsageOf("", fmt::format("unknown {} {}{}", kind, word, didYouMean(word, names)));
}

}  // namespace

std::string versionText() { return fmt::format("{}\n", kVersion); }

Command readCommandLine(Arguments arguments) {
  if (arguments.empty()) return Outcome{wrongUsage, "", help()};
  const std::string_view word = arguments.front();
  if (word == "--help" || word == "-h") return Outcome{done, help(), ""};
  if (word == "--version") return Outcome{done, versionText(), ""};
  const auto* const found =
      std::find_if(kSubcommands.begin(), kSubcommands.end(),
                   [word](const Subcommand& each) { return word == each.name; });
  if (found == kSubcommands.end()) return unknownWord(word);
  return found->read(*found, arguments.subspan(1));
}

}  // namespace marrowbench::ctl
