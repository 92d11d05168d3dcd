#ifndef MARROWBENCH_SETTINGS_SETTINGS_PARSER_H
#define MARROWBENCH_SETTINGS_SETTINGS_PARSER_H

#include <cstddef>

#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// How far a line could be taken.
struct ParsedLine {
  bool accepted = true;
  std::size_t field = 0;  ///< of a rejected line: the index in kSettingsFields that it stopped at
  std::size_t position = 0;  ///< of a rejected line: where the text of that field stands
};

/// Fills a record from one line of a settings file, as it stands there: validate() then makes its
/// parameters fit each other.
///
/// A line that ends in ".bst" (any case) is a chain line: chainToNext is set and sourceTemplate
/// holds the next settings file's path, expanded with line and iteration 0. Every other line is a
/// test, whose fields (kSettingsFields) are separated by ";". An empty field that a ";" follows
/// reads as ";".
///
/// @param config        written; after a rejected line it may be partly written
/// @param line          the trimmed line
/// @param settingsPath  the settings file; relative paths are taken from its folder
/// @return not accepted when the method is unknown or a number is none
[[nodiscard]] ParsedLine parseSettingsLine(TestConfig& config, const LineString& line,
                                           const FixedString& settingsPath);

}  // namespace marrowbench

#endif
