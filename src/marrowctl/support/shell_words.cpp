#include "marrowctl/support/shell_words.h"

namespace marrowbench::ctl {
namespace {

// No "~", no "=": at the front of a word they mean something to one shell or another.
constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./,:+@%";

}  // namespace

std::string shellWord(std::string_view word) {
  if (!word.empty() && word.find_first_not_of(kPlain) == std::string_view::npos)
    return std::string(word);
  std::string quoted = "'";
  for (const char letter : word) {
    if (letter == '\'') {
      quoted += "'\\''";
    } else {
      quoted += letter;
    }
  }
  return quoted + "'";
}

std::string shellCommand(std::span<const std::string> words) {
  std::string command;
  for (const std::string& word : words) command += (command.empty() ? "" : " ") + shellWord(word);
  return command;
}

}  // namespace marrowbench::ctl
