#include "marrowctl/support/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr int kLeastWidth = 40;

// Empty where it is not set.
std::string_view valueOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

// By the variable that decides, as the system does.
bool isUtf8Locale() {
  for (const char* const variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string_view locale = valueOf(variable);
    if (locale.empty()) continue;
    for (const char* const name : {"UTF-8", "utf8", "utf-8", "UTF8"}) {
      if (locale.find(name) != std::string_view::npos) return true;
    }
    return false;
  }
  return false;
}

std::string_view codeOf(Tone tone) {
  switch (tone) {
    case Tone::plain: return "";
    case Tone::strong: return "\033[1m";
    case Tone::faint: return "\033[2m";
    case Tone::red: return "\033[1;31m";
    case Tone::yellow: return "\033[1;33m";
    case Tone::cyan: return "\033[1;36m";
    case Tone::green: return "\033[1;32m";
  }
  return "";
}

}  // namespace

bool isTerminal(std::FILE* file) { return isatty(fileno(file)) == 1; }

bool canRedraw(std::FILE* file) { return isTerminal(file) && valueOf("TERM") != "dumb"; }

int widthOf(std::FILE* file) {
  struct winsize size {};
  const bool isKnown = ioctl(fileno(file), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? static_cast<int>(size.ws_col) : TextStyle{}.width;
}

TextStyle styleOf(std::FILE* file) {
  TextStyle style;
  style.hasBlocks = isUtf8Locale();
  if (!isTerminal(file)) return style;
  style.hasColour = valueOf("NO_COLOR").empty() && valueOf("TERM") != "dumb";
  style.width = std::max(widthOf(file), kLeastWidth);
  return style;
}

std::string toned(std::string_view text, Tone tone, const TextStyle& style) {
  if (!style.hasColour || tone == Tone::plain) return std::string(text);
  return std::string(codeOf(tone)).append(text).append("\033[0m");
}

std::string wrapped(std::string_view text, int indent, int width) {
  const std::string margin(static_cast<std::size_t>(indent), ' ');
  const auto room = static_cast<std::size_t>(std::max(width - indent, 1));
  std::string lines, line;
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    if (!line.empty() && columnsOf(line) + 1 + columnsOf(word) > room) {
      lines += margin + line + "\n";
      line.clear();
    }
    if (!line.empty()) line += ' ';
    line += word;
  }
  return line.empty() ? lines : lines + margin + line + "\n";
}

}  // namespace marrowbench::ctl
