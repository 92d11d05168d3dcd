#ifndef MARROWBENCH_SETTINGS_SETTINGS_FIELDS_H
#define MARROWBENCH_SETTINGS_SETTINGS_FIELDS_H

#include <array>
#include <cstddef>
#include <string_view>

#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// One of the fields of a test line.
struct SettingsField {
  std::string_view name;
  /// Stores the trimmed text in the record. False when it refuses the text: the line is rejected.
  /// A number that is refused is stored as 0.
  bool (*take)(TestConfig& config, const LineString& text);
};

/// The fields of a test line in their order: method, flush, preallocate, chunkWaitMs, chunkBytes,
/// systemBuffer, fileBytes, iterations, cacheMode, source, dest, log, table, markDone. The four
/// paths are taken from the folder of the record's settings path.
extern const std::array<SettingsField, 14> kSettingsFields;

/// The text of a field and where it stands.
struct FieldText {
  LineString text;           ///< trimmed; ";" for an empty field that a ";" follows
  std::size_t position = 0;  ///< of its first character in the line, the line's length if none
  bool isOmitted = false;    ///< nothing stands between two separators, so it reads as ";"
};

/// Takes a test line apart at its separators, from the front.
class FieldReader {
 public:
  explicit FieldReader(const LineString& trimmedLine) : rest(trimmedLine) {}

  /// The next field, empty when there are no more.
  FieldText next();

 private:
  LineString rest;
  std::size_t taken = 0;  // characters of the line before the rest
};

}  // namespace marrowbench

#endif
