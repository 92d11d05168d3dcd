#include "marrowctl/plan/expansion.h"

#include <optional>

#include "marrowctl/plan/path_pattern.h"
#include "marrowctl/plan/template_expander.h"
#include "paths/done_path.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kMark(&kIterationMark, 1);

// The paths of a test on one client.
class Filler {
 public:
  Filler(const PlannedFile& plannedFile, const PlannedTest& plannedTest, const std::string& rawHost)
      : file(plannedFile),
        test(plannedTest),
        host(hostNameFrom(rawHost)),
        hostIsPlain(canBeFilledIn(host)) {}

  // Nothing for a number leaves its mark.
  ExpandedPaths paths(std::optional<std::int32_t> number) {
    iteration = number;
    numberText = number ? std::to_string(*number) : std::string();
    return {dataPath(test.patterns.source, test.source), dataPath(test.patterns.dest, test.dest),
            reportPath(test.patterns.log, test.log), reportPath(test.patterns.table, test.table)};
  }

 private:
  std::string dataPath(const std::string& pattern, const std::string& pathTemplate) {
    if (isSure(pattern)) return filledIn(pattern, host, numberText);
    if (pathTemplate.empty()) return {};
    return std::string(
        expander().twice(marked(pathTemplate), host, test.configIndex, iteration.value_or(0)));
  }

  std::string reportPath(const std::string& pattern, const std::string& pathTemplate) {
    if (isSure(pattern)) return filledIn(pattern, host, numberText);
    return std::string(
        expander().once(marked(pathTemplate), host, test.configIndex, iteration.value_or(0)));
  }

  [[nodiscard]] bool isSure(const std::string& pattern) const {
    return hostIsPlain && !pattern.empty();
  }

  [[nodiscard]] FixedString marked(const std::string& pathTemplate) const {
    FixedString path = std::string_view(pathTemplate);
    if (!iteration) path.replaceAll("[iter]", kMark);
    return path;
  }

  const TemplateExpander& expander() {
    if (!madeExpander) madeExpander.emplace(file.path, file.settingsFileNumber);
    return *madeExpander;
  }

  const PlannedFile& file;
  const PlannedTest& test;
  const FixedString host;
  const bool hostIsPlain;
  std::optional<std::int32_t> iteration;
  std::string numberText;
  std::optional<TemplateExpander> madeExpander;  // a large one, and seldom needed
};

}  // namespace

ExpandedPaths expandPaths(const PlannedFile& file, const PlannedTest& test, const std::string& host,
                          std::int32_t iteration) {
  return Filler(file, test, host).paths(iteration);
}

ExpandedPaths expandFamilies(const PlannedFile& file, const PlannedTest& test,
                             const std::string& host) {
  return Filler(file, test, host).paths(std::nullopt);
}

std::string markerOf(const PlannedFile& file, const std::string& host) {
  return std::string(doneFileOf(folderPathOf(file.path), hostNameFrom(host)));
}

bool holds(const std::string& pathTemplate, const std::string& placeholder) {
  return findIgnoreCase(pathTemplate, placeholder) >= 0;
}

}  // namespace marrowbench::ctl
