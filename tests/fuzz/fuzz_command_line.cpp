// Any arguments, one per line of the input, and the number that the settings file's name gives.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/sound.h"
#include "main/command_line.h"
#include "paths/path_text.h"
#include "settings/settings_lines.h"

namespace {

std::vector<std::string> linesOf(const std::uint8_t* data, std::size_t size) {
  std::istringstream input(std::string(data, data + size));
  std::vector<std::string> lines;
  for (std::string line; std::getline(input, line);) lines.push_back(line);
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace marrowbench;
  std::vector<std::string> words = linesOf(data, size);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());

  const CommandLine line = readCommandLine(arguments);
  test::expectSound(line.settingsPath);
  test::expect((line.exitStatus == 0) == (*line.message == '\0'));
  if (line.exitStatus != 0) return 0;
  test::expect(line.settingsPath.view().find('\\') == std::string_view::npos);
  test::expect(endsWithIgnoreCase(line.settingsPath.view(), ".bst"));
  (void)settingsFileNumberOf(line.settingsPath);
  return 0;
}
