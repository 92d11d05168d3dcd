#ifndef MARROWBENCH_MARROWCTL_SUPPORT_SHELL_WORDS_H
#define MARROWBENCH_MARROWCTL_SUPPORT_SHELL_WORDS_H

#include <span>
#include <string>
#include <string_view>

/// Words as they are typed into a POSIX shell.
namespace marrowbench::ctl {

/// The word itself where it means the same to any shell, else in quotes.
[[nodiscard]] std::string shellWord(std::string_view word);

/// Each word as shellWord() gives it, with blanks between them. Where a shell hands its words to
/// another one, as ssh does, the whole of it is a shellWord() again.
[[nodiscard]] std::string shellCommand(std::span<const std::string> words);

}  // namespace marrowbench::ctl

#endif
