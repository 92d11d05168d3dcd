#include "main/settings_loader.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "settings/raw_line.h"
#include "settings/settings_parser.h"
#include "support/clock.h"
#include "support/console.h"
#include "support/file_status.h"
#include "support/line_string.h"

namespace marrowbench {
namespace {

enum class LineKind { nothing, rejected, test, chain };

// Fills `slot` from a line as it was read.
LineKind readLine(const RawLine& rawLine, const FixedString& path, std::int32_t settingsFileNumber,
                  TestConfig& slot) {
  LineString line = charactersOf(rawLine);
  // Before the trimming: only a "#" in the first column marks a comment.
  if (startsWithChar(line, u'#')) return LineKind::nothing;
  trim(line);
  if (line.isEmpty()) return LineKind::nothing;
  if (!parseSettingsLine(slot, line, path)) return LineKind::rejected;
  slot.settingsFileNumber = settingsFileNumber;
  return slot.chainToNext ? LineKind::chain : LineKind::test;
}

}  // namespace

std::int32_t settingsFileNumberOf(const FixedString& path) {
  FixedString name = path;
  name.removeAllIgnoreCase(".bst");
  const std::string_view text = name;
  for (std::size_t i = text.size(); i-- > 3;) {
    const bool isNumeric = text[i] == '-' || (text[i] >= '0' && text[i] <= '9');
    if (isNumeric) continue;
    name.erase(0, i + 1);
    break;
  }
  return static_cast<std::int32_t>(std::strtoll(name.c_str(), nullptr, 10));
}

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

    const LineKind kind = readLine(line, path, settingsFileNumber, slot);
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
