#ifndef MARROWBENCH_MARROWCTL_FLEET_DATED_TABLES_H
#define MARROWBENCH_MARROWCTL_FLEET_DATED_TABLES_H

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/table/path_template.h"

namespace marrowbench::ctl {

/// True for a line whose table has the date in its path: nobody knows beforehand at which moment
/// its rows are written, and what the table is called then.
[[nodiscard]] bool hasDatedTable(const PlannedLine& line);

/// The tables of such lines, which are found by the names in their folders.
class DatedTables {
 public:
  DatedTables() = default;
  explicit DatedTables(const Plan& plan);

  /// Where they will be, on behalf of the plan's hosts; each once.
  [[nodiscard]] const std::vector<std::string>& folders() const { return places; }

  /// True for the name of one of them.
  [[nodiscard]] bool isTable(const std::string& name) const;

  /// Templates of those that can't be found, because a folder has the date in its name; each once.
  [[nodiscard]] const std::set<std::string>& lost() const { return lostTemplates; }
  /// Rows that each client appends to them.
  [[nodiscard]] std::int64_t lostRowsPerClient() const { return lostRows; }

 private:
  void add(const PlannedFile& file, const PlannedTest& test, const std::vector<std::string>& hosts);
  void addFolders(const std::string& folder, const PlannedTest& test,
                  const std::vector<std::string>& hosts);

  std::vector<std::string> places;
  std::set<std::string> knownPlaces;
  std::vector<PathTemplate> templates;
  std::set<std::string> lostTemplates;
  std::int64_t lostRows = 0;
};

}  // namespace marrowbench::ctl

#endif
