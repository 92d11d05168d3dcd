#ifndef MARROWBENCH_RUN_SUMMARY_LINE_H
#define MARROWBENCH_RUN_SUMMARY_LINE_H

#include <cstdint>

#include "fileaccess/run_stats.h"
#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// The share of the data time that was not spent in chunk pauses, in percent, unrounded; 100
/// without pauses or data time.
///
/// @param stats  changed: a stepBytes of 0 or less becomes defaultStepBytes(), a chunks of 0
///               becomes bytes / stepBytes in its 16 bits
[[nodiscard]] float copySpeedPercent(RunStats& stats);

/// Throughput of a run in the table's unit, KiB/s, rounded half up. A value that is not finite or
/// does not fit (no data time) gives -9223372036854775808.
[[nodiscard]] std::int64_t kibPerSecond(const RunStats& stats);

/// copySpeedPercent() rounded to the nearest integer, halves away from zero; a value that does
/// not fit gives -9223372036854775808.
[[nodiscard]] std::int64_t roundedCopySpeedPercent(RunStats& stats);

/// One line for a run: files, MiB, time, MiB/s, percent. Times up to 60,000 ms read as seconds
/// and hundredths, longer ones as minutes and seconds.
///
/// @param stats       as for copySpeedPercent()
/// @param fixedWidth  pads the figures so that lines align
[[nodiscard]] FixedString summaryLine(RunStats& stats, bool fixedWidth = false);

/// Prints a row when the configuration asks for empty-cache mode 4 with "Posix" or "System". Only
/// information: no method acts on the mode. @return true
bool printEmptyCacheInfo(TestConfig& config);

/// Prints the row with the file server's address when the test has a destination file, turns the
/// backslashes in both paths, and sets the number of network interfaces to 0.
void printDestinationInfo(TestConfig& config);

}  // namespace marrowbench

#endif
