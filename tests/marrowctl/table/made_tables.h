#ifndef MARROWBENCH_TESTS_MARROWCTL_TABLE_MADE_TABLES_H
#define MARROWBENCH_TESTS_MARROWCTL_TABLE_MADE_TABLES_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "helpers/temp_folder.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/table/read_results.h"
#include "support/time_stamps.h"

namespace marrowbench::ctl::test {

/// A row of a write of 1 MiB, unless its source says otherwise.
struct WrittenRow {
  double start = 0;  ///< seconds since the first row of all
  double seconds = 1;
  std::string dest;
  std::string source = "MEMORY";
  int iterations = 3;
  std::string method = "Posix";
};

/// 16 November 2026, 02:00:00 UTC.
inline constexpr std::int64_t kFirst = 1794794400;

inline std::string textOf(const WrittenRow& row) {
  const auto end = kFirst + static_cast<std::int64_t>(row.start + row.seconds + 0.5);
  const auto ms = static_cast<std::int64_t>(row.seconds * 1000 + 0.5);
  const std::string type = row.source == "MEMORY" ? "Write"
                           : row.dest == "MEMORY" ? "Read"
                                                  : "Copy";
  return std::string(dateText(end).view()) + "," + row.method + "," + type +
         ",,,0,65536,64,0,1024," + std::to_string(row.iterations) + ",0," + row.source + ",," +
         row.dest + ",,,," + std::to_string(ms) + "," + std::to_string(ms == 0 ? 0 : 1024000 / ms) +
         ",100,,,,,,,,,,,,,\n\n";
}

/// Rows of one client: an iteration after the other, each of a second.
///
/// @param dest  "%" stands for the iteration
inline std::vector<WrittenRow> client(double start, int iterations, const std::string& dest,
                                      const std::string& source = "MEMORY") {
  const auto filled = [](std::string path, int iteration) {
    for (auto at = path.find('%'); at != std::string::npos; at = path.find('%'))
      path.replace(at, 1, std::to_string(iteration));
    return path;
  };
  std::vector<WrittenRow> rows;
  for (int i = 0; i < iterations; ++i)
    rows.push_back({start + i, 1, filled(dest, i), filled(source, i), iterations, "Posix"});
  return rows;
}

/// Rows in the order of their ends, as clients append them.
inline std::vector<WrittenRow> together(std::vector<std::vector<WrittenRow>> clients) {
  std::vector<WrittenRow> all;
  for (const auto& rows : clients) all.insert(all.end(), rows.begin(), rows.end());
  std::stable_sort(all.begin(), all.end(), [](const WrittenRow& a, const WrittenRow& b) {
    return a.start + a.seconds < b.start + b.seconds;
  });
  return all;
}

/// Tables in a folder, and what is found out of them.
class MadeTables {
 public:
  void add(const std::string& name, const std::vector<WrittenRow>& rows) {
    std::string text = "Date,Method,Type,\n\n";
    for (const WrittenRow& row : rows) text += textOf(row);
    const FixedString path = folder.file(name);
    marrowbench::test::writeFile(path, text);
    marrowbench::test::setModified(path, kFirst + 3600);
    options.tables.push_back(folder.path() + "/" + name);
  }

  /// A settings file in a folder of another place than the rows name.
  void settings(const std::string& text) {
    marrowbench::test::writeFile(folder.file("a.bst"), text);
    std::istringstream none;
    plan = makePlan({{folder.path() + "/a.bst"}, options.hosts, 0}, none);
    options.plan = &plan;
  }

  /// "HOST ITERATION" of each row, tables one after the other.
  std::vector<std::string> found() {
    outcome = readResults(options);
    std::vector<std::string> found;
    for (RowCursor rows(outcome.set); rows.next();) {
      found.push_back(outcome.set.hosts[rows.row().host] + " " +
                      std::to_string(rows.row().iteration));
    }
    return found;
  }

  /// The names of the hosts, each once.
  std::vector<std::string> hosts() {
    outcome = readResults(options);
    return outcome.set.hosts;
  }

  /// Source and destination of each test, without what differs between its rows.
  [[nodiscard]] std::vector<std::string> tests() const {
    std::vector<std::string> paths;
    for (const ResultTest& test : outcome.set.tests) paths.push_back(test.source + " " + test.dest);
    return paths;
  }

  marrowbench::test::TempFolder folder;
  ReadOptions options;
  ReadOutcome outcome;
  Plan plan;
};

}  // namespace marrowbench::ctl::test

#endif
