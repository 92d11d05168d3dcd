#ifndef MARROWBENCH_MARROWCTL_PLAN_SETTINGS_READER_H
#define MARROWBENCH_MARROWCTL_PLAN_SETTINGS_READER_H

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "settings/test_config.h"

namespace marrowbench::ctl {

/// Reads settings files into records as the program does: all files of a run into the same ones, as
/// the path of a chain shows what its record held before.
class SettingsReader {
 public:
  /// @param clients  one at least: the paths of the first one decide what kind of test a line is
  explicit SettingsReader(std::vector<std::string> clients);

  /// Makes the records those of a program that has just started.
  void startRun();

  /// Reads a file to its end, though nothing but comments counts behind a chain line.
  ///
  /// Whether the files of `missingChains` are there is not looked at.
  ///
  /// @param path   as the program has it, "-" for standard input
  /// @param input  at its beginning
  PlannedFile read(const std::string& path, std::istream& input);

  /// Leaves the records as read() left them when it read this file.
  void passOver(const PlannedFile& file);

 private:
  std::vector<std::string> hosts;
  std::string date;
  std::vector<TestConfig> table;
  std::size_t touched = 0;  // records that are no longer fresh
};

}  // namespace marrowbench::ctl

#endif
