#include "settings/settings_parser.h"

#include "paths/placeholders.h"
#include "settings/settings_fields.h"
#include "support/line_string.h"

namespace marrowbench {
namespace {

void parseChainLine(TestConfig& config, const LineString& line) {
  config.sourceTemplate = narrowedText<FixedString::capacity()>(line);
  expandPlaceholders(config, config.sourceTemplate, 0, 0, false);
}

ParsedLine parseTestLine(TestConfig& config, const LineString& line) {
  FieldReader fields(line);
  for (std::size_t i = 0; i < kSettingsFields.size(); ++i) {
    const FieldText field = fields.next();
    if (!kSettingsFields[i].take(config, field.text)) return {false, i, field.position};
  }
  return {};
}

}  // namespace

ParsedLine parseSettingsLine(TestConfig& config, const LineString& line,
                             const FixedString& settingsPath) {
  config.settingsPath = settingsPath;
  config.settingsLine = line;
  config.chainToNext = endsWithIgnoreCase(line, ".bst");
  if (!config.chainToNext) return parseTestLine(config, line);
  parseChainLine(config, line);
  return {};
}

}  // namespace marrowbench
