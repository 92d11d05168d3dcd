#include "marrowctl/plan/client_paths.h"

#include "marrowctl/plan/template_expander.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kMark(&kIterationMark, 1);

const std::string& templateOf(const PlannedTest& test, const PathPattern& pattern) {
  if (&pattern == &test.patterns.source) return test.source;
  if (&pattern == &test.patterns.dest) return test.dest;
  return &pattern == &test.patterns.log ? test.log : test.table;
}

bool isOfData(const PlannedTest& test, const PathPattern& pattern) {
  return &pattern == &test.patterns.source || &pattern == &test.patterns.dest;
}

}  // namespace

ClientPaths::ClientPaths(std::string_view rawHost)
    : host(hostNameFrom(rawHost)), hostIsPlain(canBeFilledIn(host)) {}

std::string ClientPaths::made(const PlannedFile& file, const PlannedTest& test,
                              const PathPattern& pattern, Iteration iteration) const {
  if (!hostIsPlain || !pattern.isExact) return expanded(file, test, pattern, iteration);
  const std::string number = iteration ? std::to_string(*iteration) : std::string();
  return filledIn(pattern.text, {host, number, file.date});
}

std::string ClientPaths::expanded(const PlannedFile& file, const PlannedTest& test,
                                  const PathPattern& pattern, Iteration iteration) const {
  FixedString path = std::string_view(templateOf(test, pattern));
  if (path.isEmpty()) return {};
  if (!iteration) path.replaceAll("[iter]", kMark);
  const TemplateExpander expander(file.path, file.settingsFileNumber);
  const std::int32_t number = iteration.value_or(0);
  return std::string(isOfData(test, pattern) ? expander.twice(path, host, test.configIndex, number)
                                             : expander.once(path, host, test.configIndex, number));
}

}  // namespace marrowbench::ctl
