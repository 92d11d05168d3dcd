#ifndef MARROWBENCH_RESULTS_SHARED_TABLE_H
#define MARROWBENCH_RESULTS_SHARED_TABLE_H

#include "support/fixed_string.h"

namespace marrowbench {

enum class TableAppend {
  written,
  locked,     ///< another client held the lock all the time, or the lock could not be created:
              ///< errno tells why, 0 in the first case
  takenOver,  ///< this client stood still so long that its lock was taken over; nothing written
  failed,     ///< the table could not be written, errno tells why; nothing of the row is left in it
};

/// Appends a row to a table that other clients append to as well, under the table's lock, which is
/// waited for up to 10 s. A new table begins with `header`; both together are cut at 5,000
/// characters.
///
/// What is no regular file (a pipe, a terminal, /dev/stdout) is written to as it is: it has no
/// size, and nothing can be taken back from it.
TableAppend appendToTable(const FixedString& path, const TextBuffer& header, const TextBuffer& row);

}  // namespace marrowbench

#endif
