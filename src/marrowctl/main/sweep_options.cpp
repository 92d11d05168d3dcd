#include <string_view>

#include "marrowctl/main/option_set.h"

namespace marrowbench::ctl {
namespace {

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

}  // namespace

Command readSweep(const Subcommand& self, Arguments arguments) {
  SweepCommand command;
  OptionSet options(self);
  for (const SweepList& list : kSweepLists)
    options.text(list.flag, command.sweep.*list.value, list.type, list.help);
  options.text(
      "--neighbour", command.neighbourList, "LIST",
      "Clients, each of which reads the files of the next: a file, or names as c1,c[02-10]");
  options.text("--output", command.sweep.output, "FILE",
               "NAME.bst to write; default: the standard output");
  options.flag("--force", command.overwrites, "Overwrite what is there");
  options.footer(
      "A list is 4K,64K,1M or a range in powers of two, 4K..4M.\n\n"
      "Example: which chunk size is best, through which interface?\n"
      "  marrowctl sweep --method posix,stream --chunk 4K..4M --size 256M --output chunks.bst\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (!options.words.empty()) return options.wrong("too much: " + options.words.front());
  command.sweep.command = "marrowctl sweep";
  for (const char* const word : arguments) command.sweep.command += " " + quotedForShell(word);
  return command;
}

}  // namespace marrowbench::ctl
