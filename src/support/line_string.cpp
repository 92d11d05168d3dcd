#include "support/line_string.h"

#include <algorithm>

namespace marrowbench {
namespace {

LineString widenedLine(std::string_view text) {
  LineString line;
  line.assignBytes(text);
  return line;
}

}  // namespace

bool startsWithChar(const LineString& line, char16_t c) {
  return line.isNotEmpty() && line.view().front() == c;
}

bool endsWithIgnoreCase(const LineString& line, std::string_view pattern) {
  const LineString wide = widenedLine(pattern);
  if (line.isEmpty() || wide.length() > line.length()) return false;
  return equalsIgnoreCase(line.view().substr(line.length() - wide.length()), wide.view());
}

bool equalsIgnoreCase(const LineString& line, std::string_view text) {
  return equalsIgnoreCase(line.view(), widenedLine(text).view());
}

void trim(LineString& line) {
  constexpr std::u16string_view kBlanks(u"\0\t\n\r ", 5);
  const std::u16string_view text = line.view();
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::u16string_view::npos) return line.clear();
  line.assign(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

LineString takeField(LineString& line, char16_t separator, bool keepSeparator) {
  const std::u16string_view text = line.view();
  const auto found = std::find_if(text.begin(), text.end(), [separator](char16_t c) {
    return upperCase(c) == upperCase(separator);
  });
  const auto position = static_cast<std::size_t>(found - text.begin());

  LineString field;
  if (position > 0) {
    const bool withSeparator = keepSeparator && found != text.end();
    field.assign(text.substr(0, position + (withSeparator ? 1 : 0)));
  } else if (!keepSeparator) {
    // Inverted on purpose: an empty settings field reads as the separator, which every numeric
    // field refuses, so a line with a forgotten value is not run with a silent zero.
    field.assign(text.substr(0, 1));
  }
  line.erase(0, position + 1);
  return field;
}

}  // namespace marrowbench
