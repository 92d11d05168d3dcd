#ifndef MARROWBENCH_MARROWCTL_TABLE_RESULT_SET_H
#define MARROWBENCH_MARROWCTL_TABLE_RESULT_SET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "marrowctl/table/parameters.h"
#include "marrowctl/table/row_store.h"

/// What happened: the rows of results tables, with their hosts, tests and times.
namespace marrowbench::ctl {

/// Where no host, settings line or the like is known.
inline constexpr std::uint32_t kNone = UINT32_MAX;

/// A file that was read.
struct ResultFile {
  std::string path;
  std::int64_t changed = 0;    ///< time of its last change, seconds since the epoch
  std::uint64_t rows = 0;      ///< usable rows
  bool hasLockBeside = false;  ///< "PATH_lock.txt" is there
};

/// A row that can't be used.
struct UnusableRow {
  std::uint32_t file = 0;
  std::uint64_t line = 0;  ///< from 1
  std::string reason;
};

/// Rows of one settings line, or of the same parameters and paths.
struct ResultTest {
  std::string name;  ///< for people; unique in a set
  Parameters parameters;
  std::string source, dest;  ///< "MEMORY", or a path with "[host]", "[iter]" and "[date]" in it
  std::string settingsFile;  ///< empty: not known
  int configIndex = -1;      ///< number of the test in its settings file, from 0; -1: not known
  int settingsLine = 0;      ///< from 1; 0: not known
  /// Rows that each client should have in a run; -1: not known.
  std::int64_t expectedRows = -1;
};

/// The rows of one client in one test.
struct Series {
  std::uint32_t host = 0;
  std::uint32_t test = 0;
};

/// The runs that stand in the tables.
struct RunCount {
  std::int64_t found = 0;   ///< all of them
  std::int64_t judged = 0;  ///< the newest, or all
};

/// All of it. Indices lead from rows to series, and from these to hosts and tests.
struct ResultSet {
  std::vector<ResultFile> files;
  std::vector<std::string> hosts;  ///< in the order of their names; "?" where none is known
  std::vector<ResultTest> tests;   ///< in the order of the settings, else of their first rows
  std::vector<Series> series;
  std::vector<UnusableRow> unusable;  ///< of all runs
  RunCount runs;
  std::uint64_t readRows = 0;      ///< usable rows, of all runs
  std::uint64_t judgedRows = 0;    ///< those of the judged runs
  bool knowsSettings = false;      ///< tests are the lines of settings files
  std::vector<std::string> notes;  ///< what the reader should know, each once
  RowStore store;

  /// Rows that each client should have of a test, in all judged runs together; below 0: not known.
  [[nodiscard]] std::int64_t expectedRows(std::size_t test) const {
    const std::int64_t rows = tests[test].expectedRows;
    return rows < 0 ? rows : rows * runs.judged;
  }
};

/// A row as it is looked at. One whose transfer failed, ran nothing or could not be timed has
/// `moved` false and 0 bytes.
struct ResultRow {
  std::int64_t start = 0;  ///< seconds since the epoch: end less milliseconds, rounded down
  std::int64_t end = 0;
  double exactStart = 0;  ///< end less milliseconds, not rounded
  std::uint32_t host = 0;
  std::uint32_t test = 0;
  std::uint32_t series = 0;
  std::int32_t iteration = 0;  ///< from 0
  std::int64_t bytes = 0;
  std::int64_t milliseconds = 0;
  std::int64_t speedPercent = 0;   ///< share of the time that was no pause
  std::int64_t nullPosition = -1;  ///< -1: not looked for; 0: no null data; else its position
  bool hasError = false;
  bool moved = false;
  std::uint32_t file = 0;
  std::uint64_t line = 0;  ///< from 1
};

/// Tests that stand side by side in a set: [begin, end).
struct TestRange {
  std::size_t begin = 0, end = SIZE_MAX;
};

/// Visits the rows of the judged runs in the order in which they stand in the files.
class RowCursor {
 public:
  /// @param set  kept and not changed by its owner while the cursor is used
  /// @param unpacking  nothing: lines are 0 and there are no texts, which is faster
  /// @param tests  whose rows are visited
  explicit RowCursor(const ResultSet& set, Unpacking unpacking = Unpacking::all,
                     TestRange tests = {})
      : set_(set), stored(set.store, unpacking), range(tests) {}

  /// Steps to the first or next row. @return false behind the last one
  bool next();

  [[nodiscard]] const ResultRow& row() const { return current; }

  /// The row as it is stored, and what it shares with others.
  [[nodiscard]] const StoredRowCursor& raw() const { return stored; }

  /// Texts of the row; each call makes one.
  [[nodiscard]] std::string source() const { return stored.source(); }
  [[nodiscard]] std::string dest() const { return stored.dest(); }
  [[nodiscard]] std::string error() const { return stored.error(); }

 private:
  [[nodiscard]] bool visits(const StoredRow& row) const {
    if ((row.flags & isJudged) == 0) return false;
    const std::uint32_t test = set_.series[row.series].test;
    return test >= range.begin && test < range.end;
  }

  const ResultSet& set_;
  StoredRowCursor stored;
  const TestRange range;
  ResultRow current;
};

/// MiB per second of a row that moved something.
[[nodiscard]] inline double mibPerSecond(const ResultRow& row) {
  return static_cast<double>(row.bytes) * 1000.0 /
         (1048576.0 * static_cast<double>(row.milliseconds));
}

}  // namespace marrowbench::ctl

#endif
