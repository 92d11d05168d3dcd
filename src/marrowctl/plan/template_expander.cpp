#include "marrowctl/plan/template_expander.h"

#include "paths/path_text.h"
#include "paths/placeholders.h"

namespace marrowbench::ctl {

FixedString folderPathOf(const std::string& settingsPath) {
  return settingsPath == "-" ? std::string_view("-.bst") : std::string_view(settingsPath);
}

TemplateExpander::TemplateExpander(const std::string& settingsPath, std::int32_t settingsFileNumber)
    : isStandardInput(settingsPath == "-") {
  config.settingsPath = std::string_view(settingsPath);
  config.settingsFileNumber = settingsFileNumber;
}

FixedString TemplateExpander::once(std::string_view pathTemplate, const FixedString& host,
                                   std::int32_t configIndex, std::int32_t iteration) const {
  FixedString path = pathTemplate;
  // Without a placeholder there is no need for the host's name, the date and the environment.
  if (pathTemplate.find('[') == std::string_view::npos) return normalisePath(path);
  // First, as the program does, which would put in the name of this machine.
  path.replaceAll("[host]", host);
  // A path of one character is its own folder.
  if (isStandardInput) path.replaceAll("[cfgPath]", "");
  expandPlaceholders(config, path, configIndex, iteration, false);
  return path;
}

FixedString TemplateExpander::twice(std::string_view pathTemplate, const FixedString& host,
                                    std::int32_t configIndex, std::int32_t iteration) const {
  const FixedString path = once(pathTemplate, host, configIndex, iteration);
  if (isMemoryPath(path)) return {};
  return once(path, host, configIndex, iteration);
}

}  // namespace marrowbench::ctl
