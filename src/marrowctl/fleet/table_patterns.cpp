#include "marrowctl/fleet/table_patterns.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "marrowctl/plan/template_expander.h"
#include "support/fixed_string_ops.h"

namespace marrowbench::ctl {
namespace {

// What differs between rows of one line. Another byte than "*" until the rest is expanded: a folder
// may be called so.
constexpr std::array<std::string_view, 3> kVarying = {"[host]", "[date]", "[iter]"};
constexpr char kAnything = '\x01';
constexpr std::string_view kSpecial = "*?[\\";

std::string withMarks(const std::string& pathTemplate) {
  std::string text;
  for (std::size_t i = 0; i < pathTemplate.size();) {
    const std::string_view rest = std::string_view(pathTemplate).substr(i);
    const auto* const found =
        std::find_if(kVarying.begin(), kVarying.end(), [rest](std::string_view each) {
          return endsWithIgnoreCase(rest.substr(0, each.size()), each);
        });
    text += found == kVarying.end() ? pathTemplate[i] : kAnything;
    i += found == kVarying.end() ? 1 : found->size();
  }
  return text;
}

std::string patternOf(std::string_view path) {
  if (path.find(kAnything) == std::string_view::npos) return std::string(path);
  std::string pattern;
  for (const char byte : path) {
    if (byte == kAnything) {
      pattern += '*';
      continue;
    }
    if (kSpecial.find(byte) != std::string_view::npos) pattern += '\\';
    pattern += byte;
  }
  return pattern;
}

}  // namespace

std::vector<std::string> tablePatterns(const Plan& plan) {
  std::vector<std::string> patterns;
  for (const PlannedFile& file : plan.files) {
    const TemplateExpander expander(file.path, file.settingsFileNumber);
    for (const PlannedLine& line : file.lines) {
      const PlannedTest& test = line.test;
      if (line.kind != LineKind::test || !test.isRun || test.table.empty()) continue;
      const std::string pattern =
          patternOf(expander.once(withMarks(test.table), {}, test.configIndex, 0).view());
      // A folder is what an empty field becomes.
      if (pattern.ends_with('/')) continue;
      if (std::find(patterns.begin(), patterns.end(), pattern) == patterns.end())
        patterns.push_back(pattern);
    }
  }
  return patterns;
}

}  // namespace marrowbench::ctl
