#include "paths/placeholders.h"

#include <string>
#include <string_view>

#include "paths/folders.h"
#include "paths/host_name.h"
#include "paths/path_text.h"
#include "settings/test_config.h"
#include "support/clock.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

// The name between folder and extension, except that a "/" before position 3 and a "." before
// position 2 belong to it.
FixedString settingsFileName(const FixedString& settingsPath) {
  std::string_view name = settingsPath;
  const std::int32_t slash = findLastChar(name, '/');
  if (slash >= 3) name.remove_prefix(static_cast<std::size_t>(slash) + 1);
  const std::int32_t dot = findLastChar(name, '.');
  if (dot >= 2) name = name.substr(0, static_cast<std::size_t>(dot));
  return name;
}

FixedString withoutTrailingId(std::string_view name) {
  name = name.substr(0, name.find_last_not_of("0123456789-") + 1);
  if (endsWithIgnoreCase(name, "_init")) name.remove_suffix(5);
  return name;
}

}  // namespace

void expandPlaceholders(const TestConfig& config, FixedString& text, std::int32_t cfgLine,
                        std::int32_t iteration, bool keepCfgPath) {
  const FixedString name = settingsFileName(config.settingsPath);
  const std::string line = std::to_string(cfgLine);

  text.replaceAll("[host]", hostName());
  text.replaceAll("[date]", fileStamp(currentSeconds()));
  text.replaceAll("[iter]", std::to_string(iteration));
  text.replaceAll("[cfgline]", line);
  text.replaceAll("[cfgTaskID]", line);
  text.replaceAll("[cfgID]", std::to_string(config.settingsFileNumber));
  text.replaceAll("[cfgLogName]", FixedString("_").append(name).append("_log"));
  text.replaceAll("[cfgNameID]", name);
  text.replaceAll("[cfgName]", withoutTrailingId(name));
  if (!keepCfgPath) text.replaceAll("[cfgPath]", parentFolder(config.settingsPath));
  text.replaceAll("[temp]", tempFolder());
  text = normalisePath(text);
}

}  // namespace marrowbench
