#include "marrowctl/fleet/dated_tables.h"

#include <algorithm>

#include "marrowctl/table/settings_lines.h"

namespace marrowbench::ctl {
namespace {

bool has(const std::string& text, char mark) { return text.find(mark) != std::string::npos; }

}  // namespace

bool hasDatedTable(const PlannedLine& line) {
  return writesRows(line) && line.test.patterns.table.has(kDateMark);
}

DatedTables::DatedTables(const Plan& plan) {
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (hasDatedTable(line)) add(file, line.test, plan.hosts);
    }
  }
}

bool DatedTables::isTable(const std::string& name) const {
  return std::any_of(templates.begin(), templates.end(),
                     [&name](const PathTemplate& each) { return each.matchName(name); });
}

void DatedTables::add(const PlannedFile& file, const PlannedTest& test,
                      const std::vector<std::string>& hosts) {
  const std::string& path = test.patterns.table.text;
  const std::string folder = path.substr(0, path.rfind('/'));
  if (has(folder, kDateMark)) {
    lostTemplates.insert(test.table);
    lostRows += test.iterations;
    return;
  }
  addFolders(folder, test, hosts);
  PathTemplate each(file, test, test.table, false);
  if (std::find(templates.begin(), templates.end(), each) == templates.end())
    templates.push_back(std::move(each));
}

void DatedTables::addFolders(const std::string& folder, const PlannedTest& test,
                             const std::vector<std::string>& hosts) {
  for (const std::string& host : hosts) {
    for (std::int32_t iteration = 0; iteration <= test.lastIteration(); ++iteration) {
      std::string place = filledIn(folder, {host, std::to_string(iteration), {}});
      if (knownPlaces.insert(place).second) places.push_back(std::move(place));
      if (!has(folder, kIterationMark)) break;
    }
    if (!has(folder, kHostMark)) break;
  }
}

}  // namespace marrowbench::ctl
