#ifndef MARROWBENCH_MARROWCTL_MAIN_TABLE_OPTIONS_H
#define MARROWBENCH_MARROWCTL_MAIN_TABLE_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "marrowctl/main/command_line.h"
#include "marrowctl/main/option_set.h"
#include "marrowctl/table/read_results.h"

/// What "report" and "compare" share: where rows are, and whose.
namespace marrowbench::ctl {

/// Declares the options.
void addTableOptions(OptionSet& options, TableOptions& values);

/// Takes settings files out of the words that belong to no option, so that
/// "report results.csv --settings one.bst two.bst" works.
void takeSettings(std::vector<std::string>& words, TableOptions& values);

/// What the options come to.
struct TableSource {
  std::vector<std::string> hosts;  ///< named ones, as they were given
  std::optional<Plan> plan;
};

/// Reads lists of hosts and settings files. @return what is wrong with them
[[nodiscard]] std::optional<Outcome> prepareSource(const std::string& subcommand,
                                                   const TableOptions& values, TableSource& source);

/// How tables are to be read. @param source  kept by the caller as long as the options are used
[[nodiscard]] ReadOptions readOptionsOf(const TableOptions& values, const TableSource& source,
                                        std::vector<std::string> tables);

}  // namespace marrowbench::ctl

#endif
