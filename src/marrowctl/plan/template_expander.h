#ifndef MARROWBENCH_MARROWCTL_PLAN_TEMPLATE_EXPANDER_H
#define MARROWBENCH_MARROWCTL_PLAN_TEMPLATE_EXPANDER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench::ctl {

/// The settings path by which a file's folder is found. Standard input, "-", is taken for a file in
/// the current folder.
[[nodiscard]] FixedString folderPathOf(const std::string& settingsPath);

/// Expands the path templates of one settings file with the program's own placeholders.
class TemplateExpander {
 public:
  TemplateExpander(const std::string& settingsPath, std::int32_t settingsFileNumber);

  /// A template expanded once, as logs and tables are.
  [[nodiscard]] FixedString once(std::string_view pathTemplate, const FixedString& host,
                                 std::int32_t configIndex, std::int32_t iteration) const;

  /// A template expanded twice, as sources and destinations are; empty for memory.
  [[nodiscard]] FixedString twice(std::string_view pathTemplate, const FixedString& host,
                                  std::int32_t configIndex, std::int32_t iteration) const;

 private:
  bool isStandardInput;
  TestConfig config;  // of which the placeholders read the settings file's path and number
};

}  // namespace marrowbench::ctl

#endif
