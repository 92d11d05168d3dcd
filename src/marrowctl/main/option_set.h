#ifndef MARROWBENCH_MARROWCTL_MAIN_OPTION_SET_H
#define MARROWBENCH_MARROWCTL_MAIN_OPTION_SET_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "marrowctl/main/command_line.h"
#include "marrowctl/main/outcome.h"

namespace marrowbench::ctl {

using Arguments = std::span<char* const>;

/// A word by which marrowctl is told what to do.
struct Subcommand {
  const char* name;
  const char* purpose;
  /// What the arguments behind the word ask for.
  Command (*read)(const Subcommand& self, Arguments arguments);
};

/// The options of a subcommand: declared first, then taken from the arguments. A value is changed
/// where its option is given; it must live until then. Wraps the library that reads command lines,
/// so that one file alone takes long to compile.
class OptionSet {
 public:
  /// @param arguments  how the help calls the words that belong to no option: " FILE..."
  explicit OptionSet(const Subcommand& subcommand, const char* arguments = "");
  OptionSet(const OptionSet&) = delete;
  OptionSet& operator=(const OptionSet&) = delete;
  ~OptionSet();

  void flag(const char* name, bool& value, const char* help);
  void text(const char* name, std::string& value, const char* type, const char* help);
  /// One of a few words.
  void choice(const char* name, std::string& value, const char* type, const char* help,
              std::vector<std::string> words);
  /// One word each time; may be given more than once.
  void names(const char* name, std::vector<std::string>& values, const char* type,
             const char* help);
  /// A whole number, which is decimal, whatever it begins with.
  void number(const char* name, std::int64_t& value, std::int64_t least, std::int64_t most,
              const char* type, const char* help);
  /// A span of time: "90", "90s", "15m", "2h", "1d".
  void duration(const char* name, std::optional<std::int64_t>& seconds, const char* help);
  /// The one can't be given with the other. @pre both are declared
  void exclude(const char* name, const char* other);
  /// What stands at the end of the help: "Example: ...".
  void footer(const char* text);

  /// What is to be said instead of going on; nothing: the arguments are taken.
  std::optional<Outcome> parse(Arguments arguments);

  /// Words that belong to no option, and all that stand behind "--".
  std::vector<std::string> words;

  [[nodiscard]] Outcome wrong(const std::string& problem) const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts;
};

/// Each subcommand's options, in a file of its own.
[[nodiscard]] Command readCheck(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readSweep(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readRun(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readReport(const Subcommand& self, Arguments arguments);
[[nodiscard]] Command readCompare(const Subcommand& self, Arguments arguments);
/// Of the level whose own words follow: "fleet arm".
[[nodiscard]] Command readFleet(const Subcommand& self, Arguments arguments);

/// "marrowctl 1.2.3" and a line feed.
[[nodiscard]] std::string versionText();

inline constexpr std::int64_t kMostClients = 1'000'000'000;

}  // namespace marrowbench::ctl

#endif
