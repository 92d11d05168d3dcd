#ifndef MARROWBENCH_SETTINGS_SETTINGS_LINES_H
#define MARROWBENCH_SETTINGS_SETTINGS_LINES_H

#include <cstdint>

#include "settings/raw_line.h"
#include "settings/settings_parser.h"
#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench {

enum class LineKind {
  nothing,   ///< blank or a comment
  rejected,  ///< neither a test nor a chain
  test,
  chain,  ///< names the next settings file
};

/// A line of a settings file, and what the record that it filled was before validation.
struct SettingsLine {
  LineKind kind = LineKind::nothing;
  ParsedLine parsed;         ///< of a test or a rejected line
  ParameterBlock asWritten;  ///< of a test: its parameters before validate()
};

/// Takes a line as it was read: drops comments and blank lines, trims, parses, validates. Prints
/// nothing.
///
/// A "#" in the first column marks a comment, and only there: the line is looked at before it is
/// trimmed.
///
/// @param path                the settings file
/// @param settingsFileNumber  settingsFileNumberOf() it, stored in the record of a line that is
///                            accepted: a chain path is expanded with the number that the slot had
/// @param slot                filled unless the line is dropped; partly when it is rejected
SettingsLine takeSettingsLine(const RawLine& line, const FixedString& path,
                              std::int32_t settingsFileNumber, TestConfig& slot);

/// The number at the end of a settings file's name: what atoi reads in the trailing run of digits
/// and "-", ".bst" removed. The first three characters of the path are never looked at, so a path
/// that is nothing else from there on is read from its front.
[[nodiscard]] std::int32_t settingsFileNumberOf(const FixedString& path);

}  // namespace marrowbench

#endif
