#ifndef MARROWBENCH_MARROWCTL_SUPPORT_TERMINAL_H
#define MARROWBENCH_MARROWCTL_SUPPORT_TERMINAL_H

#include <cstdio>
#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// How text for people is set.
struct TextStyle {
  bool hasColour = false;
  int width = 100;         ///< columns
  bool hasBlocks = false;  ///< bars may be drawn with block characters
};

[[nodiscard]] bool isTerminal(std::FILE* file);

/// A terminal that can draw a line anew in its place.
[[nodiscard]] bool canRedraw(std::FILE* file);

/// Columns of a terminal, however few; 100 where there is none.
[[nodiscard]] int widthOf(std::FILE* file);

/// Colour on a terminal, unless NO_COLOR is set and not empty or TERM is "dumb"; the terminal's
/// width, 100 columns where there is none. Block characters where the locale's characters are
/// UTF-8.
[[nodiscard]] TextStyle styleOf(std::FILE* file);

enum class Tone { plain, strong, faint, red, yellow, cyan, green };

/// The text, wrapped in what switches the tone on and off where the style has colour.
[[nodiscard]] std::string toned(std::string_view text, Tone tone, const TextStyle& style);

/// The text in lines of at most `width` columns, broken at blanks, each after `indent` blanks and
/// with a line feed. A word that is too long gets a line of its own.
[[nodiscard]] std::string wrapped(std::string_view text, int indent, int width);

}  // namespace marrowbench::ctl

#endif
