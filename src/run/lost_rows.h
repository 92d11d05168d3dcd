#ifndef MARROWBENCH_RUN_LOST_ROWS_H
#define MARROWBENCH_RUN_LOST_ROWS_H

#include <cstdint>

#include "results/shared_table.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// Counts the rows that tables should have got in a run, and says on standard error which are lost:
/// console and log show what their readers have always read there.
class LostRows {
 public:
  /// Takes down what became of one row; a lost one is told in a line "marrowbench: row lost: TABLE:
  /// REASON". A path that names a folder asks for no table: its rows don't count.
  ///
  /// @param code  errno as appendToTable() left it
  void note(const FixedString& table, TableAppend outcome, int code);

  /// Prints "marrowbench: N of M rows lost" on standard error; nothing when none is.
  void printSum() const;

 private:
  std::int64_t asked = 0;
  std::int64_t lost = 0;
};

}  // namespace marrowbench

#endif
