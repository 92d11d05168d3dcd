#ifndef MARROWBENCH_MARROWCTL_PLAN_PATTERN_MAKER_H
#define MARROWBENCH_MARROWCTL_PLAN_PATTERN_MAKER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "marrowctl/plan/plan.h"
#include "marrowctl/plan/template_expander.h"

namespace marrowbench::ctl {

/// Makes the patterns of one settings file's tests, of equal templates once.
class PatternMaker {
 public:
  PatternMaker(const std::string& settingsPath, std::int32_t settingsFileNumber);

  [[nodiscard]] PathPatterns patternsOf(const PlannedTest& test);

 private:
  struct Known {
    PathPattern pattern;
    bool differsByLine = false;
  };
  using KnownPatterns = std::unordered_map<std::string, Known>;  // by template
  using Make = PathPattern (PatternMaker::*)(const std::string&, std::int32_t) const;

  PathPattern known(KnownPatterns& patterns, Make make, const std::string& pathTemplate,
                    std::int32_t configIndex);
  PathPattern reportPath(const std::string& pathTemplate, std::int32_t configIndex) const;
  PathPattern dataPath(const std::string& pathTemplate, std::int32_t configIndex) const;
  [[nodiscard]] bool isPlain(std::string_view marked) const;

  TemplateExpander expander;
  bool valuesArePlain;
  std::size_t longestValue;
  KnownPatterns dataPaths;
  KnownPatterns reportPaths;
};

}  // namespace marrowbench::ctl

#endif
