#ifndef MARROWBENCH_MARROWCTL_SUPPORT_UTF8_H
#define MARROWBENCH_MARROWCTL_SUPPORT_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

/// Settings files and paths are bytes; what shows them may need UTF-8.
namespace marrowbench::ctl {

/// What some programs put in front of a text in UTF-8.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Bytes of the well-formed character at the front of the text, 0 when there is none.
[[nodiscard]] std::size_t characterLength(std::string_view text);

/// The text with U+FFFD for every byte that belongs to no well-formed character.
[[nodiscard]] std::string repairedUtf8(std::string_view text);

/// The text as it may stand on a terminal: repaired, tabs as blanks, other control characters as
/// U+FFFD, so that a file can't send the terminal anything.
[[nodiscard]] std::string printable(std::string_view text);

/// Characters of a repaired text: as many columns as it takes on a terminal, wide ones aside.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

}  // namespace marrowbench::ctl

#endif
