#include "main/command_line.h"

#include "paths/path_text.h"

namespace marrowbench {

CommandLine readCommandLine(std::span<char* const> arguments) {
  if (arguments.size() < 2) return {{}, -1, "No commandline flags"};
  const bool hasRoot = equalsIgnoreCase(FixedString(arguments[1]).view(), "-zzRoot");
  const std::size_t position = hasRoot ? 3 : 1;

  CommandLine line;
  if (position < arguments.size()) line.settingsPath = arguments[position];
  useForwardSlashes(line.settingsPath);
  if (!endsWithIgnoreCase(line.settingsPath.view(), ".bst")) {
    return {{}, 1, "Unknown commandline flags\n"};
  }
  return line;
}

}  // namespace marrowbench
