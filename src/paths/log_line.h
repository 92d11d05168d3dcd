#ifndef MARROWBENCH_PATHS_LOG_LINE_H
#define MARROWBENCH_PATHS_LOG_LINE_H

#include "support/fixed_string.h"

namespace marrowbench {

/// Prints one report row on the console and appends it to the text log.
///
/// The row is the current local time (dateText) and ": " when `label` contains "___", otherwise 18
/// blanks; then the five columns with nothing between them, the whole cut at 500 characters.
///
/// @param logPath  empty: console only. A missing folder of the log is made when its grandparent
///                 exists; otherwise an error is printed. Nothing is said of a log that can't be
///                 written.
void writeLogLine(const FixedString& logPath, const FixedString& label,
                  const FixedString& text1 = {}, const FixedString& text2 = {},
                  const FixedString& text3 = {}, const FixedString& text4 = {});

}  // namespace marrowbench

#endif
