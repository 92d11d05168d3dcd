#include "marrowctl/fleet/leftovers.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <unordered_set>

#include "marrowctl/fleet/folder_names.h"
#include "marrowctl/plan/client_paths.h"
#include "marrowctl/plan/done_markers.h"
#include "marrowctl/plan/expansion.h"
#include "marrowctl/table/settings_lines.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

// The names in folders. Thousands of files are asked for, in few folders.
class Folders {
 public:
  [[nodiscard]] bool hold(const std::string& file) {
    const fs::path path(file);
    const std::string folder = path.parent_path().string();
    const auto added = names.try_emplace(folder.empty() ? "." : folder);
    auto& known = added.first->second;
    if (added.second) {
      (void)forEachName(added.first->first, [&](const std::string& name) { known.insert(name); });
    }
    return known.contains(path.filename().string());
  }

 private:
  std::map<std::string, std::unordered_set<std::string>> names;
};

bool isSpecial(const std::string& path) {
  std::error_code code;
  const fs::file_status status = fs::status(path, code);
  return fs::exists(status) && !fs::is_regular_file(status);
}

void addTables(const PlannedFile& file, const PlannedTest& test,
               const std::vector<std::string>& hosts, std::set<std::string>& known,
               std::vector<std::string>& tables) {
  const bool perHost = holds(test.table, "[host]");
  const bool perIteration = holds(test.table, "[iter]");
  for (const std::string& host : hosts) {
    const ClientPaths paths(host);
    for (std::int32_t iteration = 0; iteration <= test.lastIteration(); ++iteration) {
      std::string table = paths.path(file, test, test.patterns.table, iteration);
      if (!table.empty() && known.insert(table).second) tables.push_back(std::move(table));
      if (!perIteration) break;
    }
    if (!perHost) break;
  }
}

}  // namespace

std::string lockOf(const std::string& table) { return table + "_lock.txt"; }

std::vector<std::string> tablesOf(const Plan& plan) {
  std::set<std::string> known;
  std::vector<std::string> tables;
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (writesRows(line)) addTables(file, line.test, plan.hosts, known, tables);
    }
  }
  return tables;
}

Leftovers findLeftovers(const Plan& plan) {
  Folders folders;
  Leftovers found;
  for (const PlannedFile& file : plan.files) {
    if (!leavesMarker(file)) continue;
    for (const std::string& host : plan.hosts) {
      std::string marker = markerOf(file, host);
      if (folders.hold(marker)) found.markers.push_back(std::move(marker));
    }
  }
  for (const std::string& table : tablesOf(plan)) {
    if (folders.hold(table) && !isSpecial(table)) found.tables.push_back(table);
    if (std::string lock = lockOf(table); folders.hold(lock))
      found.locks.push_back(std::move(lock));
  }
  return found;
}

}  // namespace marrowbench::ctl
