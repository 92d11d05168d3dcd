#ifndef MARROWBENCH_SUPPORT_LINE_STRING_H
#define MARROWBENCH_SUPPORT_LINE_STRING_H

#include <string_view>

#include "support/fixed_string.h"

/// What only a settings line can do.
namespace marrowbench {

/// True when the line's first character is exactly `c`; false for an empty line.
[[nodiscard]] bool startsWithChar(const LineString& line, char16_t c);

/// True when the line ends with `pattern`, ignoring the case of ASCII letters. False for an empty
/// line or a pattern longer than the line.
[[nodiscard]] bool endsWithIgnoreCase(const LineString& line, std::string_view pattern);

/// True when the line has exactly the characters of `text`, ignoring the case of ASCII letters.
[[nodiscard]] bool equalsIgnoreCase(const LineString& line, std::string_view text);

/// Removes NUL, tab, line feed, carriage return and blank from both ends, nothing else.
void trim(LineString& line);

/// Takes the next field off the front of `line`.
///
/// @param line           loses the field and the separator after it
/// @param separator      compared ignoring case
/// @param keepSeparator  the field of a line that does not begin with the separator keeps it
/// @return the characters before the first separator, or the whole line when there is none. When
///         the line begins with the separator the rule is inverted: the field is the separator
///         itself unless `keepSeparator` is set, and then it is empty.
[[nodiscard]] LineString takeField(LineString& line, char16_t separator, bool keepSeparator);

}  // namespace marrowbench

#endif
