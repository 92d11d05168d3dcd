#ifndef MARROWBENCH_TESTS_MARROWCTL_CHECK_SETTINGS_FOLDER_H
#define MARROWBENCH_TESTS_MARROWCTL_CHECK_SETTINGS_FOLDER_H

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "helpers/temp_folder.h"
#include "marrowctl/check/check.h"
#include "marrowctl/plan/make_plan.h"

namespace marrowbench::ctl::test {

/// A folder with a settings file, t.bst, for this client "pc1" or a fleet.
struct SettingsFolder {
  marrowbench::test::TempFolder folder;
  PlanOptions options{{}, {"pc1"}, 0};

  SettingsFolder() { options.files = {path("t.bst")}; }

  [[nodiscard]] std::string path(std::string_view name) const {
    return folder.path() + "/" + std::string(name);
  }

  void write(std::string_view name, std::string_view content) const {
    marrowbench::test::writeFile(folder.file(name), content);
  }

  [[nodiscard]] Plan plan(std::string_view text) const {
    write("t.bst", text);
    std::istringstream nothing;
    return makePlan(options, nothing);
  }

  [[nodiscard]] std::vector<Finding> findings(std::string_view text) const {
    return check(plan(text));
  }
};

inline std::vector<std::string> namesOf(const std::vector<Finding>& findings) {
  std::vector<std::string> names;
  for (const Finding& finding : findings) names.push_back(finding.name);
  return names;
}

inline const Finding* find(const std::vector<Finding>& findings, std::string_view name) {
  const auto found = std::find_if(findings.begin(), findings.end(),
                                  [name](const Finding& f) { return f.name == name; });
  return found == findings.end() ? nullptr : &*found;
}

}  // namespace marrowbench::ctl::test

#endif
