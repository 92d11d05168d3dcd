#ifndef MARROWBENCH_MARROWCTL_RUN_OWN_ROWS_H
#define MARROWBENCH_MARROWCTL_RUN_OWN_ROWS_H

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/run/console_follower.h"
#include "marrowctl/table/parameters.h"
#include "marrowctl/table/path_template.h"
#include "marrowctl/table/row_cells.h"

namespace marrowbench::ctl {

/// Knows the rows of one run of one client among those of others, which may append to the same
/// tables with the same settings: by their test, their iteration and the client's name, where paths
/// tell them, and by the time, speed or error that the console showed.
class OwnRows {
 public:
  /// @param plan     of the settings files that were run
  /// @param console  of the whole run
  /// @param host     the client's name
  OwnRows(const Plan& plan, const ConsoleFollower& console, std::string host);

  /// True when the row is the run's. Each of the run's rows is found once; rows are asked for in
  /// the order in which they stand in their table.
  [[nodiscard]] bool take(const RowCells& cells);

  /// Rows that the run should have added to its tables, as far as the console tells.
  [[nodiscard]] std::size_t expected() const { return expectedRows; }
  [[nodiscard]] std::size_t found() const { return foundRows; }

 private:
  struct Test {
    Parameters parameters;
    PathTemplate source, dest;
    std::deque<RunIteration> iterations;  // whose rows were not found yet
  };

  void addTests(const Plan& plan, const ConsoleFollower& console);
  [[nodiscard]] bool takeFrom(Test& test, const RowCells& cells);

  std::string ownHost;
  std::vector<Test> tests;
  // Of the row asked for last.
  std::string lastParameters;
  std::optional<Parameters> parameters;
  std::size_t expectedRows = 0;
  std::size_t foundRows = 0;
};

}  // namespace marrowbench::ctl

#endif
