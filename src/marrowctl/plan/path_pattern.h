#ifndef MARROWBENCH_MARROWCTL_PLAN_PATH_PATTERN_H
#define MARROWBENCH_MARROWCTL_PLAN_PATH_PATTERN_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "marrowctl/plan/plan.h"
#include "marrowctl/plan/template_expander.h"

/// A pattern is an expanded path with marks where host and iteration go: one expansion for
/// thousands of paths. There is one only where filling the marks in is surely the same as expanding
/// the template; everywhere else it is empty.
namespace marrowbench::ctl {

/// Characters that stand for the host and for the number of the iteration.
inline constexpr char kHostMark = '\x01';
inline constexpr char kIterationMark = '\x02';

/// True for a host whose name may be filled in: up to 64 letters, digits, "-" and "_".
[[nodiscard]] bool canBeFilledIn(std::string_view host);

/// The pattern with its marks filled in; with an empty `iteration` that mark stays.
[[nodiscard]] std::string filledIn(const std::string& pattern, std::string_view host,
                                   std::string_view iteration);

/// Makes the patterns of one settings file's tests, of equal templates once.
class PatternMaker {
 public:
  PatternMaker(const std::string& settingsPath, std::int32_t settingsFileNumber);

  [[nodiscard]] PathPatterns patternsOf(const PlannedTest& test);

 private:
  using Known = std::unordered_map<std::string, std::string>;
  using Make = std::string (PatternMaker::*)(const std::string&, std::int32_t) const;

  std::string known(Known& patterns, Make make, const std::string& pathTemplate,
                    std::int32_t configIndex);
  std::string once(const std::string& pathTemplate, std::int32_t configIndex) const;
  std::string twice(const std::string& pathTemplate, std::int32_t configIndex) const;
  [[nodiscard]] bool isPlain(std::string_view pathTemplate) const;

  TemplateExpander expander;
  bool valuesArePlain;
  std::size_t longestValue;
  Known dataPaths;
  Known reportPaths;
};

}  // namespace marrowbench::ctl

#endif
