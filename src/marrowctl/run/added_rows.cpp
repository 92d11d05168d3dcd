#include "marrowctl/run/added_rows.h"

#include <glob.h>
#include <sys/stat.h>

#include <cstddef>
#include <string_view>
#include <utility>

#include "marrowctl/plan/client_paths.h"
#include "marrowctl/table/row_dates.h"
#include "marrowctl/table/settings_lines.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

// A path as a pattern of names: iterations and dates may be any.
std::string patternOf(std::string_view path) {
  constexpr std::string_view kSpecial = "*?[]\\";
  std::string pattern;
  for (const char c : path) {
    if (isMark(c)) {
      pattern += '*';
      continue;
    }
    if (kSpecial.find(c) != std::string_view::npos) pattern += '\\';
    pattern += c;
  }
  return pattern;
}

std::set<std::string> patternsOf(const Plan& plan, const std::string& host) {
  const ClientPaths paths(host);
  std::set<std::string> patterns;
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (!writesRows(line)) continue;
      const PathPattern& table = line.test.patterns.table;
      patterns.insert(patternOf(table.isExact && canBeFilledIn(host)
                                    ? filledIn(table.text, {host, {}, {}})
                                    : paths.family(file, line.test, table)));
    }
  }
  return patterns;
}

// The files that a pattern names, with what the system says of them.
std::vector<std::pair<std::string, struct stat>> filesLike(const std::string& pattern) {
  std::vector<std::pair<std::string, struct stat>> files;
  glob_t found{};
  if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
    for (std::size_t i = 0; i < found.gl_pathc; ++i) {
      struct stat status {};
      const char* const path = found.gl_pathv[i];
      // A pipe or a terminal keeps no rows.
      if (stat(path, &status) == 0 && S_ISREG(status.st_mode)) files.emplace_back(path, status);
    }
  }
  globfree(&found);
  return files;
}

}  // namespace

void AddedRows::remember(const Plan& plan) {
  patterns = patternsOf(plan, ownHost);
  for (const std::string& pattern : patterns) {
    for (const auto& [path, status] : filesLike(pattern))
      before[path] = {status.st_ino, static_cast<std::uint64_t>(status.st_size)};
  }
}

std::vector<std::string> AddedRows::grownTables(const Plan& plan) {
  std::vector<std::string> grown;
  for (const std::string& pattern : patternsOf(plan, ownHost)) {
    for (const auto& [path, status] : filesLike(pattern)) {
      const auto size = static_cast<std::uint64_t>(status.st_size);
      const auto old = before.find(path);
      const bool isSame = old != before.end() && old->second.number == status.st_ino;
      if (isSame && old->second.size == size) continue;
      // It is new as a whole.
      if ((!isSame || old->second.size > size) && patterns.contains(pattern))
        before[path] = {status.st_ino, 0};
      grown.push_back(path);
    }
  }
  return grown;
}

// Of a row of this machine, whose clock tells it.
bool AddedRows::isNew(RowDate date) const {
  return YearFinder(currentSeconds()).timeOf(date) >= begun;
}

LineChoice AddedRows::choice(OwnRows& own) const {
  const auto isKnown = [this](const std::string& table) { return before.contains(table); };
  return {[this, isKnown](const std::string& table) {
            return isKnown(table) ? before.at(table).size : 0;
          },
          [this, isKnown, &own](const std::string& table, const RowCells* cells) {
            if (cells == nullptr) return isKnown(table);
            return (isKnown(table) || isNew(cells->date)) && own.take(*cells);
          }};
}

}  // namespace marrowbench::ctl
