#ifndef MARROWBENCH_MAIN_COMMAND_LINE_H
#define MARROWBENCH_MAIN_COMMAND_LINE_H

#include <span>

#include "support/fixed_string.h"

namespace marrowbench {

/// What the command line asks for.
struct CommandLine {
  FixedString settingsPath;  ///< with "/" for every backslash; valid while exitStatus is 0
  int exitStatus = 0;        ///< not 0: end with this status after printing `message`
  const char* message = "";  ///< text for the console; every line but the last ends in "\n"
};

/// Reads "[-zzRoot FOLDER] SETTINGS.bst". The flag (any case) moves the path to the third argument;
/// its folder is not used.
[[nodiscard]] CommandLine readCommandLine(std::span<char* const> arguments);

}  // namespace marrowbench

#endif
