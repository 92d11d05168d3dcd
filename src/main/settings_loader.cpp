#include "main/settings_loader.h"

#include <cstdio>
#include <fstream>
#include <memory>

#include "settings/raw_line.h"
#include "settings/settings_lines.h"
#include "support/clock.h"
#include "support/console.h"
#include "support/file_status.h"

namespace marrowbench {

bool waitForSettingsFile(const FixedString& path) {
  bool existedAtFirstCheck = true;
  while (!fileStatus(path)) {
    existedAtFirstCheck = false;
    std::putchar('.');
    flushConsole();
    sleepMs(5000);
  }
  std::putchar('\n');
  flushConsole();
  return existedAtFirstCheck;
}

LoadedSettings loadSettings(const FixedString& path, std::span<TestConfig> table) {
  const std::int32_t settingsFileNumber = settingsFileNumberOf(path);
  LoadedSettings loaded;
  std::unique_ptr<TestConfig> scratch;
  std::ifstream file(path.c_str());
  RawLine line;
  for (int number = 1; readRawLine(file, line); ++number) {
    const bool isFull = static_cast<std::size_t>(loaded.count) == table.size();
    if (isFull && !scratch) scratch = std::make_unique<TestConfig>();
    TestConfig& slot = isFull ? *scratch : table[static_cast<std::size_t>(loaded.count)];

    const LineKind kind = takeSettingsLine(line, path, settingsFileNumber, slot).kind;
    if (kind == LineKind::nothing) continue;
    if (kind == LineKind::rejected) {
      std::printf("Error reading settings line '%s' \n", line.text.c_str());
    } else if (kind == LineKind::chain) {
      loaded.nextPath = slot.sourceTemplate;
    } else if (isFull) {
      std::printf("Error reading settings file '%s', line %d: more than %zu tests, line ignored.\n",
                  path.c_str(), number, table.size());
    } else {
      ++loaded.count;
    }
    flushConsole();
    if (kind == LineKind::chain) break;
  }
  return loaded;
}

}  // namespace marrowbench
