#ifndef MARROWBENCH_MARROWCTL_FLEET_TABLE_FOLLOWER_H
#define MARROWBENCH_MARROWCTL_FLEET_TABLE_FOLLOWER_H

#include <cstdint>
#include <functional>
#include <string>

#include "marrowctl/table/row_cells.h"

namespace marrowbench::ctl {

/// Reads a results table while clients add rows to it, every byte once.
class TableFollower {
 public:
  /// @param from  bytes at its front that do not count
  explicit TableFollower(std::string tablePath, std::int64_t from = 0)
      : file(std::move(tablePath)), position(from) {}

  /// Reads the rows that were added since the last call; half a row waits for its rest.
  ///
  /// @param take  called with each row, which points into memory that is valid during the call
  void follow(const std::function<void(const RowCells&)>& take);

  [[nodiscard]] const std::string& path() const { return file; }
  /// Rows that were taken so far.
  [[nodiscard]] std::int64_t rows() const { return rowCount; }
  /// When it was changed last, by the share's clock, milliseconds since the epoch; 0: it is not
  /// there.
  [[nodiscard]] std::int64_t changedMs() const { return changed; }

 private:
  void readFrom(int descriptor, const std::function<void(const RowCells&)>& take);
  std::size_t takeLines(std::string& bytes, const std::function<void(const RowCells&)>& take);

  std::string file;
  std::int64_t position = 0;  // behind the last whole line
  std::int64_t changed = 0;
  std::int64_t rowCount = 0;
  RowReader reader;
};

}  // namespace marrowbench::ctl

#endif
