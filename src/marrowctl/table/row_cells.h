#ifndef MARROWBENCH_MARROWCTL_TABLE_ROW_CELLS_H
#define MARROWBENCH_MARROWCTL_TABLE_ROW_CELLS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/table/line_reader.h"

namespace marrowbench::ctl {

/// Month, day and time of a row, as a number that grows with them: 4, 5, 5, 6 and 6 bits.
using RowDate = std::uint32_t;

struct DateParts {
  int month = 0, day = 0, hour = 0, minute = 0, second = 0;  ///< the month from 1
};
[[nodiscard]] DateParts partsOf(RowDate date);

/// "Nov 16. 02:21.29" as a number; 0 for any other text.
[[nodiscard]] RowDate dateFrom(std::string_view text);

/// The cells of a row that count.
struct RowCells {
  RowDate date = 0;
  char separator = ',';
  std::string_view parameters;  ///< eleven cells, from the method to the cache mode
  std::string_view source, dest, error;
  std::int64_t nullPosition = -1;  ///< -1: the cell is empty
  std::int64_t milliseconds = 0;
  std::int64_t kibPerSecond = 0;
  std::int64_t percent = 0;
};

enum class LineContent { row, nothing, unusable };

/// Takes rows apart. Paths and error texts may hold separators: twelve cells are counted from the
/// left and sixteen from the right, and what stands between them is told apart by the addresses,
/// which are empty.
class RowReader {
 public:
  /// Reads a line into `cells`, which point into it. Headers and blank lines are nothing.
  LineContent read(const TextLine& line, RowCells& cells);

  /// Why the last line is unusable.
  [[nodiscard]] const std::string& reason() const { return why; }

 private:
  bool split(std::string_view text, bool isEnded, RowCells& cells);
  bool splitMiddle(std::string_view text, RowCells& cells);
  bool takeNumbers(std::string_view text, RowCells& cells);
  bool takeNumber(std::string_view text, std::size_t cell, std::int64_t& number);
  [[nodiscard]] std::string_view fromRight(std::string_view text, std::size_t cell) const;
  bool refuse(std::string text);

  std::vector<std::uint32_t> room;      // as much as the longest line so far could need
  std::span<std::uint32_t> separators;  // of the line at hand; the last one may be its end
  std::string why;
};

}  // namespace marrowbench::ctl

#endif
