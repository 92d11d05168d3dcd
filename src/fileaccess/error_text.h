#ifndef MARROWBENCH_FILEACCESS_ERROR_TEXT_H
#define MARROWBENCH_FILEACCESS_ERROR_TEXT_H

#include <string_view>

#include "support/fixed_string.h"

namespace marrowbench {

/// "ERROR: " and up to five parts run together, cut at 500 characters without a mark.
[[nodiscard]] FixedString composeError(std::string_view part1, std::string_view part2 = {},
                                       std::string_view part3 = {}, std::string_view part4 = {},
                                       std::string_view part5 = {});

/// The text for an errno code, given what the system says about it.
///
/// @param code        0 gives "No Error."
/// @param systemText  empty when the system does not know the code; the text is then "Error CODE."
/// @return the text with every line feed and carriage return turned into a blank.
[[nodiscard]] ShortText errnoTextFor(int code, std::string_view systemText);

/// errnoTextFor() with this system's text. @param code  -1 means the current errno
[[nodiscard]] ShortText errnoText(int code);

}  // namespace marrowbench

#endif
