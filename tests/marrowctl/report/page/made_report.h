#ifndef MARROWBENCH_TESTS_MARROWCTL_REPORT_PAGE_MADE_REPORT_H
#define MARROWBENCH_TESTS_MARROWCTL_REPORT_PAGE_MADE_REPORT_H

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <vector>

#include "helpers/environment_variable.h"
#include "helpers/temp_folder.h"
#include "marrowctl/report/make_report.h"
#include "marrowctl/table/read_results.h"

namespace marrowbench::ctl::test {

/// A row of a test that writes files of 100 MiB.
struct MadeRow {
  std::string host;
  int end = 0;  ///< seconds past the hour
  int milliseconds = 1000;
  int iteration = 0;
  std::string method = "Posix";
  int chunkKib = 64;
  int pause = 0;
  int percent = 100;
  std::string error = "";
};

inline std::string textOf(const MadeRow& row) {
  return fmt::format(
      "Jan 05. "
      "10:{:02}.{:02},{},Write,,,{},{},{},-1,102400,9,0,MEMORY,,/srv/{}_{}k_{}/"
      "{}_{}.bin,,{},,{},{},{},"
      ",,,,,,,,,,,,\n",
      row.end / 60, row.end % 60, row.method, row.pause, row.chunkKib * 1024, row.chunkKib,
      row.method, row.chunkKib, row.pause, row.host, row.iteration, row.error, row.milliseconds,
      row.milliseconds > 0 ? 102400 * 1000LL / row.milliseconds : INT64_MIN, row.percent);
}

/// What marrowctl makes of a table with these rows.
inline Report madeReport(const std::vector<MadeRow>& rows) {
  const marrowbench::test::EnvironmentVariable zone("TZ", "UTC");
  const marrowbench::test::TempFolder folder;
  std::string text;
  for (const MadeRow& row : rows) text += textOf(row);
  marrowbench::test::writeFile(folder.file("results.csv"), text);
  ReadOptions options;
  options.tables = {folder.path() + "/results.csv"};
  options.hostPattern = R"(([^/]*)_\d+\.bin$)";
  return makeReport(readResults(options).set, {});
}

}  // namespace marrowbench::ctl::test

#endif
