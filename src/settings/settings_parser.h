#ifndef MARROWBENCH_SETTINGS_SETTINGS_PARSER_H
#define MARROWBENCH_SETTINGS_SETTINGS_PARSER_H

#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// Fills a record from one line of a settings file.
///
/// A line that ends in ".bst" (any case) is a chain line: chainToNext is set and sourceTemplate
/// holds the next settings file's path, expanded with line and iteration 0. Every other line is a
/// test of fields separated by ";": method, flush, prealloc, chunk wait, chunk size, system buffer,
/// file size, iterations, empty-cache mode, source, dest, log path, results path, done flag. An
/// empty field that a ";" follows reads as ";".
///
/// @param config        written; after a rejected line it may be partly written
/// @param line          the trimmed line
/// @param settingsPath  the settings file; relative paths are taken from its folder
/// @return false when the method is unknown or a number is none
[[nodiscard]] bool parseSettingsLine(TestConfig& config, LineString line,
                                     const FixedString& settingsPath);

}  // namespace marrowbench

#endif
