#ifndef MARROWBENCH_MARROWCTL_FLEET_RUN_TABLES_H
#define MARROWBENCH_MARROWCTL_FLEET_RUN_TABLES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "marrowctl/fleet/dated_tables.h"
#include "marrowctl/fleet/folder_names.h"
#include "marrowctl/fleet/run_state.h"
#include "marrowctl/fleet/table_follower.h"
#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// The results tables of a run while clients add rows to them.
class RunTables {
 public:
  /// Called with each new row and the path of its table.
  using Take = std::function<void(const RowCells& cells, const std::string& table)>;

  /// Rows of earlier runs stand in front of a table's rows; of a table that is told again the first
  /// size counts. @param bytes  that they take
  void startBehind(const std::string& table, std::int64_t bytes);

  /// Follows the tables of the plan's hosts, too. @param publishedMs  by the share's clock: what
  /// was written before is of an earlier run
  void add(const Plan& plan, std::int64_t publishedMs);

  /// Reads the rows that were added to the next tables, in turn. @param most  tables and folders
  void follow(std::size_t most, FolderListings& folders, const Take& take);

  /// The locks of the next tables that are there. Those that are not asked are taken for free:
  /// locks are held for moments.
  [[nodiscard]] std::vector<WatchedLock> locks(std::size_t most, std::int64_t nowMs);

  /// When the last of them got a row, by the share's clock, milliseconds; 0: none has one.
  [[nodiscard]] std::int64_t lastRowMs() const { return lastRow; }

 private:
  void addTable(std::string path, std::int64_t from);
  void findDated(std::size_t most, FolderListings& folders);

  std::unordered_map<std::string, std::int64_t> rowsBefore;  // bytes of tables when it began
  std::vector<TableFollower> tables;
  std::unordered_set<std::string> known;
  DatedTables dated;
  std::int64_t published = 0;
  std::int64_t lastRow = 0;
  std::size_t nextTable = 0, nextFolder = 0, nextLock = 0;  // where the next call goes on
};

}  // namespace marrowbench::ctl

#endif
