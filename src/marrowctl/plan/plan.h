#ifndef MARROWBENCH_MARROWCTL_PLAN_PLAN_H
#define MARROWBENCH_MARROWCTL_PLAN_PLAN_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "marrowctl/plan/path_pattern.h"
#include "settings/settings_lines.h"
#include "settings/test_config.h"

/// What settings files will do, found out by the rules of the program itself. No test file is
/// touched and nothing is created.
namespace marrowbench::ctl {

/// A field of a test line as it stands there.
struct PlannedField {
  std::string text;        ///< trimmed; ";" for an empty field that a ";" follows
  int column = 1;          ///< of its first byte in the line, from 1
  bool isOmitted = false;  ///< nothing stands between two separators
};

/// A test line after validation.
struct PlannedTest {
  int configIndex = 0;  ///< number of the test in its file, from 0: "[cfgline]"
  bool isRun = true;    ///< false for the 201st test of a file and later ones
  Method method = Method::posix;
  /// As it runs on the first host: with both paths in memory a read test.
  TestType type = TestType::write;
  ParameterBlock asWritten;  ///< the parameters before validation
  ParameterBlock used;       ///< and after it
  std::int32_t iterations = 0;
  bool markDone = false;
  /// The path templates, resolved against the settings file's folder; empty source or dest: memory.
  std::string source, dest, log, table;
  PathPatterns patterns;  ///< of the templates, for ClientPaths

  /// 0 also for a test that is never run: a settings file may ask for any number of iterations.
  [[nodiscard]] std::int32_t lastIteration() const { return iterations > 0 ? iterations - 1 : 0; }
};

/// A line that is neither blank nor a comment.
struct PlannedLine {
  int number = 1;            ///< from 1
  std::string text;          ///< as it was read, its first 1 MiB
  std::uint64_t length = 0;  ///< bytes of the whole line
  LineKind kind = LineKind::test;
  std::size_t refusedField = 0;         ///< of a rejected line: index in kSettingsFields
  std::array<PlannedField, 14> fields;  ///< of test and rejected lines
  PlannedTest test;                     ///< of test lines
};

/// A "# marrowctl: allow NAME..." comment.
struct AllowComment {
  int number = 1;  ///< its line
  struct Name {
    std::string text;
    int column = 1;
  };
  std::vector<Name> names;
  std::string text;  ///< the whole line
};

/// A next file of a client's own that is not there.
struct MissingChain {
  std::string host, path;
};

/// One settings file, read to its chain line or to its end.
struct PlannedFile {
  std::string path;    ///< as it was named, or as a chain line gives it
  bool exists = true;  ///< false: clients wait for it
  std::int32_t settingsFileNumber = 0;
  std::string date;  ///< of the planning: what "[date]" is in paths that are made of patterns
  bool hasByteOrderMark = false;
  std::vector<AllowComment> allows;
  std::vector<PlannedLine> lines;           ///< up to and with the chain line
  std::string chain;                        ///< path of the next file, empty for none
  std::vector<MissingChain> missingChains;  ///< of clients behind the first one, by their names
  int chainLine = 0;                        ///< the line that names it
  PlannedLine behindChain;  ///< the first line behind it that is no comment; length 0: none
  bool chainsBack = false;  ///< the chain leads to a file that was visited before
};

/// The files in the order in which they are run, and for whom.
struct Plan {
  std::vector<PlannedFile> files;
  std::vector<std::string> hosts;  ///< named clients, as the program calls them; at least one
  std::int64_t clients = 1;        ///< of the fleet; at least as many as there are hosts
  [[nodiscard]] bool isForManyClients() const { return clients > 1; }
};

}  // namespace marrowbench::ctl

#endif
