#include "settings/settings_lines.h"

#include <cstdlib>
#include <string_view>

#include "settings/settings_validation.h"
#include "support/line_string.h"

namespace marrowbench {

SettingsLine takeSettingsLine(const RawLine& rawLine, const FixedString& path,
                              std::int32_t settingsFileNumber, TestConfig& slot) {
  LineString line = charactersOf(rawLine);
  // Before the trimming: only a "#" in the first column marks a comment.
  if (startsWithChar(line, u'#')) return {};
  trim(line);
  if (line.isEmpty()) return {};

  SettingsLine taken;
  taken.parsed = parseSettingsLine(slot, line, path);
  taken.kind = LineKind::rejected;
  if (!taken.parsed.accepted) return taken;
  taken.kind = slot.chainToNext ? LineKind::chain : LineKind::test;
  taken.asWritten = slot.parameters.parameters;
  if (taken.kind == LineKind::test) validate(slot);
  slot.settingsFileNumber = settingsFileNumber;
  return taken;
}

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

}  // namespace marrowbench
