#include "marrowctl/fleet/row_owners.h"

#include <algorithm>

#include "marrowctl/table/settings_lines.h"

namespace marrowbench::ctl {
namespace {

void add(PathTemplate each, std::vector<PathTemplate>& templates) {
  if (each.hasHost() && std::find(templates.begin(), templates.end(), each) == templates.end())
    templates.push_back(std::move(each));
}

}  // namespace

RowOwners::RowOwners(const Plan& plan) : isKnownOfAll(true) {
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (!writesRows(line)) continue;
      const PlannedTest& test = line.test;
      const PathTemplate source(file, test, test.source, true);
      const PathTemplate dest(file, test, test.dest, true);
      const PathTemplate table(file, test, test.table, false);
      isKnownOfAll = isKnownOfAll && (source.hasHost() || dest.hasHost() || table.hasHost());
      add(dest, data);
      add(source, data);
      add(table, tables);
    }
  }
}

std::string_view RowOwners::ownerOf(std::string_view source, std::string_view dest,
                                    std::string_view table) {
  for (const std::string_view path : {dest, source}) {
    if (const std::string_view host = hostIn(data, path); !host.empty()) return host;
  }
  return hostIn(tables, table);
}

// The next row is mostly from the same line: its template moves to the front.
std::string_view RowOwners::hostIn(std::vector<PathTemplate>& templates, std::string_view path) {
  for (std::size_t i = 0; i < templates.size(); ++i) {
    const auto match = templates[i].match(path);
    if (!match || match->host.empty()) continue;
    const std::string_view host = match->host;
    if (i > 0) std::swap(templates[i], templates.front());
    return host;
  }
  return {};
}

}  // namespace marrowbench::ctl
