#include "marrowctl/fleet/run_tables.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "marrowctl/fleet/in_turn.h"
#include "marrowctl/fleet/leftovers.h"
#include "marrowctl/fleet/share_clock.h"

namespace marrowbench::ctl {

void RunTables::startBehind(const std::string& table, std::int64_t bytes) {
  rowsBefore.try_emplace(table, bytes);
}

void RunTables::add(const Plan& plan, std::int64_t publishedMs) {
  published = publishedMs;
  dated = DatedTables(plan);
  // What a table with the date in its path will be called is not known.
  Plan others = plan;
  for (PlannedFile& file : others.files) std::erase_if(file.lines, hasDatedTable);
  for (std::string& table : tablesOf(others)) addTable(std::move(table), 0);
}

void RunTables::addTable(std::string path, std::int64_t from) {
  if (!known.insert(path).second) return;
  const auto before = rowsBefore.find(path);
  const std::int64_t begin = before == rowsBefore.end() ? from : before->second;
  tables.emplace_back(std::move(path), begin);
}

void RunTables::follow(std::size_t most, FolderListings& folders, const Take& take) {
  findDated(most, folders);
  inTurn(tables.size(), most, nextTable, [&](std::size_t i) {
    TableFollower& table = tables[i];
    if (table.changedMs() == 0) folders.renew(table.path());
    table.follow([&](const RowCells& cells) { take(cells, table.path()); });
    if (table.rows() > 0) lastRow = std::max(lastRow, table.changedMs());
  });
}

void RunTables::findDated(std::size_t most, FolderListings& folders) {
  inTurn(dated.folders().size(), most, nextFolder, [&](std::size_t i) {
    const std::string folder = dated.folders()[i] + "/";
    folders.renew(folder);
    for (const std::string& name : folders.of(dated.folders()[i]).names) {
      std::string path = folder + name;
      if (known.contains(path) || !dated.isTable(name)) continue;
      std::int64_t bytes = 0;
      const auto changed = modifiedMsOf(path, &bytes);
      // In one that was there before the run stand rows of an earlier one.
      if (changed) addTable(std::move(path), *changed < published ? bytes : 0);
    }
  });
}

std::vector<WatchedLock> RunTables::locks(std::size_t most, std::int64_t nowMs) {
  std::vector<WatchedLock> found;
  inTurn(tables.size(), most, nextLock, [&](std::size_t i) {
    const std::string path = lockOf(tables[i].path());
    struct stat status {};
    // Not opened: some shares do not delete what somebody has open, and its client must.
    if (stat(path.c_str(), &status) != 0) return;
    found.push_back(
        {tables[i].path(), path, std::max<std::int64_t>(nowMs - modifiedMs(status), 0)});
  });
  return found;
}

}  // namespace marrowbench::ctl
