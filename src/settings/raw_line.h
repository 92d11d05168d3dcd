#ifndef MARROWBENCH_SETTINGS_RAW_LINE_H
#define MARROWBENCH_SETTINGS_RAW_LINE_H

#include <cstdint>
#include <istream>
#include <string>

#include "support/fixed_string.h"

namespace marrowbench {

/// A line of a settings file as it was read. The file may be one endless line, so only its
/// beginning is kept.
struct RawLine {
  std::string text;          ///< the first 1,048,576 bytes
  std::uint64_t length = 0;  ///< bytes of the whole line, without its end
};

/// Reads up to the next line feed, which is dropped; the last line may have none.
///
/// @return false at the end of the file and when it can't be read on
[[nodiscard]] bool readRawLine(std::istream& file, RawLine& line);

/// The line's characters, one for each byte: the first min(length modulo 65,536, 1,000).
[[nodiscard]] LineString charactersOf(const RawLine& line);

}  // namespace marrowbench

#endif
