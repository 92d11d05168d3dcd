#ifndef MARROWBENCH_MARROWCTL_TABLE_TABLE_FILE_H
#define MARROWBENCH_MARROWCTL_TABLE_TABLE_FILE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "marrowctl/table/result_set.h"
#include "marrowctl/table/row_cells.h"

namespace marrowbench::ctl {

/// Which lines of tables count.
struct LineChoice {
  /// Bytes at the front of a table that do not.
  std::function<std::uint64_t(const std::string& table)> skippedBytes;
  /// Whether a line behind them does. @param cells  null: it is a row that can't be used
  std::function<bool(const std::string& table, const RowCells* cells)> takes;
};

/// Puts the rows of tables into a set, one file after the other: their cells and times, but not yet
/// whose they are.
class TableReader {
 public:
  /// Called with the bytes of a file that were read since the last call.
  using Progress = std::function<void(std::uint64_t)>;

  /// @param lineChoice  nothing: all lines count
  TableReader(ResultSet& resultSet, Progress progressCall,
              std::optional<LineChoice> lineChoice = std::nullopt)
      : set(resultSet), progress(std::move(progressCall)), choice(std::move(lineChoice)) {}

  /// Reads a table; "-" is the standard input.
  ///
  /// @return the problem, with the path in front: it can't be read, or is no table; empty: none
  [[nodiscard]] std::string read(const std::string& path);

  /// The same of a file that is open. @param changed  its time, seconds since the epoch
  [[nodiscard]] std::string readOpen(int fileDescriptor, const std::string& path,
                                     std::int64_t changed);

 private:
  void takeLine(const TextLine& line, RowCells& cells);
  bool takeLines(int fileDescriptor, std::string& problem);
  [[nodiscard]] bool isTable(std::uint64_t rowsBefore) const;
  void takeRow(const TextLine& line, const RowCells& cells);
  void addRow(const TextLine& line, const RowCells& cells, std::uint32_t kind);
  void refuse(const TextLine& line, std::string reason);
  [[nodiscard]] const std::uint32_t* kindOf(const RowCells& cells, std::string& reason);

  /// Takes its numbers where it is.
  [[nodiscard]] bool isOfLastKind(const RowCells& cells);
  const std::uint32_t* remember(const RowCells& cells, const std::uint32_t* index);

  ResultSet& set;
  Progress progress;
  const std::optional<LineChoice> choice;
  RowReader rows;
  std::uint64_t lineBefore = 0;  // of the last row of the file
  std::uint64_t skipped = 0;     // bytes at the front of the file that do not count
  bool hasLines = false;         // other than headers and blank ones
  bool hasOtherRows = false;     // that do not count
  bool hasHeader = false;
  // Of the row at hand; kept to save their memory.
  std::string key;
  std::vector<Digits> numbers;
  // Of the row before it.
  std::string lastParameters;
  const std::uint32_t* lastKind = nullptr;
  ShapeMatcher lastSource, lastDest, lastError;
};

}  // namespace marrowbench::ctl

#endif
