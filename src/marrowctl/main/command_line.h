#ifndef MARROWBENCH_MARROWCTL_MAIN_COMMAND_LINE_H
#define MARROWBENCH_MARROWCTL_MAIN_COMMAND_LINE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "marrowctl/main/outcome.h"
#include "marrowctl/sweep/sweep.h"

namespace marrowbench::ctl {

enum class CheckFormat { text, gcc, json };

/// The options of "marrowctl check".
struct CheckCommand {
  std::vector<std::string> files;      ///< settings files, folders of them, or "-"
  std::vector<std::string> hosts;      ///< clients, each by its name
  std::vector<std::string> hostLists;  ///< clients, as readHostList() takes them
  std::int64_t clients = 0;            ///< of the fleet; 0: as many as are named
  bool isStrict = false;
  bool isSummary = false;
  CheckFormat format = CheckFormat::text;
  std::string explained;  ///< name of a finding that is to be explained; empty: none
};

/// The options of "marrowctl sweep".
struct SweepCommand {
  SweepOptions sweep;
  std::string neighbourList;  ///< as readHostList() takes it; empty: none
  bool overwrites = false;
};

/// The page that is written besides.
struct PageOptions {
  std::string file;         ///< that is to be written; empty: none
  bool overwrites = false;  ///< it may be there already
};

/// The options of "marrowctl run".
struct RunCommand {
  std::string file;
  bool isStrict = false;
  std::string program;  ///< that measures; empty: it is looked for
  PageOptions page;
};

enum class ReportFormat { text, json, tidy };

/// Where rows are, and whose: what "report" and "compare" share.
struct TableOptions {
  std::vector<std::string> settings;   ///< settings files that were run; empty: not known
  std::vector<std::string> hostLists;  ///< clients, as readHostList() takes them
  std::string hostPattern;             ///< empty: none
  std::int64_t gapMinutes = 30;
  bool allRuns = false;
};

/// The options of "marrowctl report".
struct ReportCommand {
  std::vector<std::string> tables;  ///< files, folders, patterns, or "-"
  TableOptions from;
  std::int64_t clients = 0;  ///< that there should be; 0: not known
  std::string doneFolder;    ///< of done markers; empty: not looked at
  std::string link;          ///< speed of a client's link: "10G"; empty: not known
  PageOptions page;
  ReportFormat format = ReportFormat::text;
};

/// The options of "marrowctl compare".
struct CompareCommand {
  std::string oldTables, newTables;
  TableOptions from;
  PageOptions page;
  bool isJson = false;
  std::optional<double> failIfSlower;  ///< percent
};

/// A command of "marrowctl fleet", its options taken.
struct FleetCommand {
  std::function<Outcome()> carryOut;
};

/// An Outcome when there is nothing left to do: help, the version, or what is wrong with the usage.
using Command = std::variant<Outcome, CheckCommand, SweepCommand, RunCommand, ReportCommand,
                             CompareCommand, FleetCommand>;

/// What the arguments behind the program's name ask for.
[[nodiscard]] Command readCommandLine(std::span<char* const> arguments);

}  // namespace marrowbench::ctl

#endif
