#ifndef MARROWBENCH_MARROWCTL_TABLE_TABLE_NAMES_H
#define MARROWBENCH_MARROWCTL_TABLE_TABLE_NAMES_H

#include <string>
#include <vector>

namespace marrowbench::ctl {

struct TableNames {
  std::vector<std::string> files;  ///< each once, in the order in which they were named
  std::string problem;             ///< with the name in front; empty: there is none
};

/// The tables that are named: a file is itself, a folder its *.csv files and a pattern with "*",
/// "?" or "[" the files that fit it, both in the order of their names. "-" is the standard input.
[[nodiscard]] TableNames tableNames(const std::vector<std::string>& names);

}  // namespace marrowbench::ctl

#endif
