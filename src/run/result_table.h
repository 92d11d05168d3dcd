#ifndef MARROWBENCH_RUN_RESULT_TABLE_H
#define MARROWBENCH_RUN_RESULT_TABLE_H

#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// The two lines for the results file, each cut at 5000 characters.
struct ResultLines {
  TextBuffer header;
  TextBuffer row;
};

/// ";" when the C locale in force writes "," as its decimal point, so that a spreadsheet of that
/// locale opens the table; otherwise ",". The program sets no locale, so it is ",".
[[nodiscard]] char tableSeparator();

/// Builds header and row of one iteration. Every cell, the last included, is followed by the
/// separator, each line by a newline; cells are not quoted.
///
/// @param config     the configuration after the run, its four paths expanded
/// @param result     error text, null position and statistics of the run; the statistics are
///                   changed as by copySpeedPercent()
/// @param separator  between cells
[[nodiscard]] ResultLines buildResultLines(const TestConfig& config, _fileGLobal& result,
                                           char separator);

}  // namespace marrowbench

#endif
