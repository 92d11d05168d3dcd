#include "fileaccess/error_text.h"

#include <array>
#include <cerrno>
#include <string>

#include "support/platform.h"

namespace marrowbench {

FixedString composeError(std::string_view part1, std::string_view part2, std::string_view part3,
                         std::string_view part4, std::string_view part5) {
  FixedString text = "ERROR: ";
  return text.append(part1).append(part2).append(part3).append(part4).append(part5);
}

ShortText errnoTextFor(int code, std::string_view systemText) {
  if (code == 0) return "No Error.";
  ShortText text = systemText;
  if (text.isEmpty()) text.append("Error ").append(std::to_string(code)).append('.');
  text.replaceCharIgnoreCase('\n', ' ');
  text.replaceCharIgnoreCase('\r', ' ');
  return text;
}

ShortText errnoText(int code) {
  if (code == -1) code = errno;
  std::array<char, ShortText::capacity() + 1> text{};
  const bool known = systemErrorText(code, text.data(), text.size());
  return errnoTextFor(code, known ? text.data() : "");
}

}  // namespace marrowbench
