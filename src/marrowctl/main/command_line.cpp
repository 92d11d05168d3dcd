#include "marrowctl/main/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

#include "marrowctl/support/exit_status.h"
#include "marrowctl/support/suggestion.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kVersion = "marrowctl " MARROWCTL_VERSION;
constexpr std::int64_t kMostClients = 1'000'000'000;

using Arguments = std::span<char* const>;

struct Subcommand {
  const char* name;
  const char* purpose;
  Command (*read)(const Subcommand& self, Arguments arguments);
};

// An App for each subcommand, and none around them: inside of one, a file whose name is that of a
// subcommand would start that subcommand, also behind "--".
class Options {
 public:
  /// @param arguments  how the help calls the words that belong to no option
  explicit Options(const Subcommand& subcommand, const char* arguments = "")
      : name_(subcommand.name), arguments_(arguments) {
    app.description(subcommand.purpose);
    app.name("marrowctl " + name_);
    app.set_help_flag("-h,--help", "Show this help");
    app.set_version_flag("--version", kVersion, "Show the version");
    // Names of files, which as an argument of its own CLI11 takes for lists where they have
    // brackets; and unknown options, which are told with a suggestion.
    app.allow_extras();
  }

  /// What is to be said instead of going on; nothing: the arguments are taken.
  std::optional<Outcome> parse(Arguments arguments) {
    std::vector<std::string> words(arguments.rbegin(), arguments.rend());
    try {
      app.parse(words);
    } catch (const CLI::CallForHelp&) {
      return Outcome{done, help(), ""};
    } catch (const CLI::CallForVersion&) {
      return Outcome{done, fmt::format("{}\n", kVersion), ""};
    } catch (const CLI::ParseError& problem) {
      return wrong(problem.what());
    }
    for (const std::string& word : app.remaining()) {
      if (word.starts_with('-') && word != "-") return wrong(unknown(word));
      names.push_back(word);
    }
    return {};
  }

  [[nodiscard]] Outcome wrong(const std::string& problem) const {
    return wrongUsageOf(name_, problem);
  }

  CLI::App app;
  std::vector<std::string> names;  ///< words that belong to no option

 private:
  [[nodiscard]] std::string unknown(const std::string& word) const {
    std::vector<std::string> options;
    for (const CLI::Option* option : app.get_options()) {
      for (const std::string& name : option->get_lnames()) options.push_back("--" + name);
    }
    const std::vector<std::string_view> views(options.begin(), options.end());
    const std::string flag = word.substr(0, word.find('='));
    return fmt::format("unknown option {}{}", flag, didYouMean(flag, views));
  }

  [[nodiscard]] std::string help() const {
    constexpr std::string_view kOptions = "[OPTIONS]";
    std::string text = app.help();
    return text.insert(text.find(kOptions) + kOptions.size(), arguments_);
  }

  std::string name_;
  const char* arguments_;
};

// Not by CLI11, which reads "010" as eight.
std::int64_t clientsFrom(const std::string& text) {
  std::int64_t clients = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, code] = std::from_chars(text.data(), end, clients);
  if (code == std::errc() && stop == end && clients >= 1 && clients <= kMostClients) return clients;
  throw CLI::ValidationError("--clients",
                             fmt::format("{} is no number from 1 to {}", text, kMostClients));
}

CLI::Option* addNames(CLI::App& app, const char* flag, std::vector<std::string>& names,
                      const char* type, const char* help) {
  // One name for each flag: what follows is a file.
  return app.add_option(flag, names, help)->type_name(type)->allow_extra_args(false)->take_all();
}

void addCheckOptions(CLI::App& app, CheckCommand& check) {
  addNames(app, "--host", check.hosts, "NAME", "A client, by its host name; may be given again");
  addNames(app, "--hosts", check.hostLists, "LIST",
           "Clients: a file of names, or names as c1,c[02-10]");
  app.add_option_function<std::string>(
         "--clients", [&check](const std::string& text) { check.clients = clientsFrom(text); },
         "How many clients there are; default: as many as are named")
      ->type_name("N");
  app.add_flag("--strict", check.isStrict, "Warnings count: exit status 1");
  app.add_flag("--summary", check.isSummary, "Totals and findings only");
  auto* const json = app.add_flag_callback(
      "--json", [&check] { check.format = CheckFormat::json; }, "One JSON document");
  app.add_option_function<std::string>(
         "--format",
         [&check](const std::string& name) {
           check.format = name == "gcc" ? CheckFormat::gcc : CheckFormat::text;
         },
         "text, or gcc: findings as compilers print them")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"text", "gcc"}))
      ->excludes(json);
  app.add_option("--explain", check.explained, "The story behind a finding, with an example")
      ->type_name("NAME");
  app.footer(
      "A FILE may be a folder of settings files, or - for the standard input.\n\n"
      "Example: will these 20 clients get in each other's way?\n"
      "  marrowctl check --hosts 'c[01-20]' many_clients.bst\n");
}

Command readCheck(const Subcommand& self, Arguments arguments) {
  // Not by CLI11, which tells names behind "--" as too much.
  const auto dashes = std::find(arguments.begin(), arguments.end(), std::string_view("--"));
  CheckCommand check;
  Options options(self, " FILE...");
  addCheckOptions(options.app, check);
  if (const auto outcome = options.parse({arguments.begin(), dashes})) return *outcome;
  check.files = options.names;
  if (dashes != arguments.end()) check.files.insert(check.files.end(), dashes + 1, arguments.end());
  if (check.files.empty() && check.explained.empty()) return options.wrong("name a settings file");
  return check;
}

struct SweepList {
  const char* flag;
  std::string SweepOptions::*value;
  const char* type;
  const char* help;
};

constexpr SweepList kSweepLists[] = {
    {"--method", &SweepOptions::method, "LIST", "posix, ansic, stream; default: posix"},
    {"--kind", &SweepOptions::kind, "LIST", "write, read, copy; default: write"},
    {"--chunk", &SweepOptions::chunk, "SIZES", "Of each call, 0 for the whole file; default: 1M"},
    {"--size", &SweepOptions::size, "SIZES", "Of the files; default: 256M"},
    {"--buffer", &SweepOptions::buffer, "LIST",
     "-1: the interface's own, 0: none, 1: a chunk; default: -1"},
    {"--wait", &SweepOptions::wait, "NUMBERS", "Milliseconds after each chunk; default: 0"},
    {"--iterations", &SweepOptions::iterations, "NUMBERS", "How often each test runs; default: 1"},
    {"--flush", &SweepOptions::flush, "LIST", "no, yes; default: no"},
    {"--prealloc", &SweepOptions::prealloc, "LIST", "no, yes; default: no"},
    {"--dest", &SweepOptions::dest, "PATHS",
     "Folder, ending in /, or file to write; default: NAME_data/[host]/"},
    {"--source", &SweepOptions::source, "PATHS", "File to read; default: what the sweep writes"},
    {"--log", &SweepOptions::log, "PATHS", "Text log; default: NAME_log_[host].txt"},
    {"--table", &SweepOptions::table, "PATHS", "Results table; default: NAME_results.csv"},
};

void addSweepOptions(CLI::App& app, SweepCommand& command) {
  for (const SweepList& list : kSweepLists) {
    app.add_option(list.flag, command.sweep.*list.value, list.help)->type_name(list.type);
  }
  app.add_option(
         "--neighbour", command.neighbourList,
         "Clients, each of which reads the files of the next: a file, or names as c1,c[02-10]")
      ->type_name("LIST");
  app.add_option("--output", command.sweep.output,
                 "NAME.bst to write; default: the standard output")
      ->type_name("FILE");
  app.add_flag("--force", command.overwrites, "Overwrite what is there");
  app.footer(
      "A list is 4K,64K,1M or a range in powers of two, 4K..4M.\n\n"
      "Example: which chunk size is best, through which interface?\n"
      "  marrowctl sweep --method posix,stream --chunk 4K..4M --size 256M --output chunks.bst\n");
}

// In a comment of the settings file, from which it can be copied into a shell.
std::string quotedForShell(std::string_view word) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./,:=+@%";
  if (!word.empty() && word.find_first_not_of(kPlain) == std::string_view::npos)
    return std::string(word);
  std::string quoted = "'";
  for (const char letter : word) {
    // A line's end would end the comment.
    quoted += letter == '\''                     ? "'\\''"
              : letter == '\n' || letter == '\r' ? "?"
                                                 : std::string(1, letter);
  }
  return quoted + "'";
}

Command readSweep(const Subcommand& self, Arguments arguments) {
  SweepCommand command;
  Options options(self);
  addSweepOptions(options.app, command);
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (!options.names.empty()) return options.wrong("too much: " + options.names.front());
  command.sweep.command = "marrowctl sweep";
  for (const char* const word : arguments) command.sweep.command += " " + quotedForShell(word);
  return command;
}

constexpr std::array kSubcommands = {
    Subcommand{"check", "Say what settings files will do, and what is wrong with them", readCheck},
    Subcommand{"sweep", "Write settings files that hold every combination of values", readSweep},
};

std::string help() {
  std::string text =
      "Usage: marrowctl COMMAND [OPTIONS]\n\n"
      "Prepares what marrowbench measures.\n\n"
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

Command readCommandLine(Arguments arguments) {
  if (arguments.empty()) return Outcome{wrongUsage, "", help()};
  const std::string_view word = arguments.front();
  if (word == "--help" || word == "-h") return Outcome{done, help(), ""};
  if (word == "--version") return Outcome{done, fmt::format("{}\n", kVersion), ""};
  const auto* const found =
      std::find_if(kSubcommands.begin(), kSubcommands.end(),
                   [word](const Subcommand& each) { return word == each.name; });
  if (found == kSubcommands.end()) return unknownWord(word);
  return found->read(*found, arguments.subspan(1));
}

}  // namespace marrowbench::ctl
