#ifndef MARROWBENCH_MARROWCTL_RUN_ADDED_ROWS_H
#define MARROWBENCH_MARROWCTL_RUN_ADDED_ROWS_H

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/run/own_rows.h"
#include "marrowctl/table/table_file.h"

namespace marrowbench::ctl {

/// Remembers how long the tables of a plan were when a run began, and knows afterwards which have
/// grown and which of their lines are new.
class AddedRows {
 public:
  /// @param host     name of this machine
  /// @param started  seconds since the epoch
  AddedRows(std::string host, std::int64_t started) : ownHost(std::move(host)), begun(started) {}

  /// Tables as they are now. Called once, before the run.
  void remember(const Plan& plan);

  /// Tables that have grown since, or were not there. @param plan  may know more than before
  [[nodiscard]] std::vector<std::string> grownTables(const Plan& plan);

  /// Which lines of these tables count: new ones that are the run's own, and new ones that can't be
  /// used. Of a table that the plan did not name before the run: rows that ended since.
  ///
  /// @param own  kept by the caller as long as the choice is used
  [[nodiscard]] LineChoice choice(OwnRows& own) const;

 private:
  struct Table {
    ino_t number = 0;  // of the file: another one may take its place
    std::uint64_t size = 0;
  };

  [[nodiscard]] bool isNew(RowDate date) const;

  std::string ownHost;
  std::int64_t begun;
  std::set<std::string> patterns;       // of the tables' names
  std::map<std::string, Table> before;  // by path
};

}  // namespace marrowbench::ctl

#endif
