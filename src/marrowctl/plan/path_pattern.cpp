#include "marrowctl/plan/path_pattern.h"

#include <algorithm>

#include "marrowctl/plan/expansion.h"
#include "paths/folders.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kLongestHost = 64;
constexpr std::string_view kMarks("\x01\x02", 2);

FixedString withMarks(std::string_view pathTemplate) {
  FixedString marked = pathTemplate;
  marked.replaceAll("[host]", kMarks.substr(0, 1));
  marked.replaceAll("[iter]", kMarks.substr(1, 1));
  return marked;
}

bool isPlainValue(std::string_view value) {
  return value.find_first_of("[]\x01\x02") == std::string_view::npos;
}

}  // namespace

bool canBeFilledIn(std::string_view host) {
  return !host.empty() && host.size() <= kLongestHost &&
         std::all_of(host.begin(), host.end(), [](char c) {
           const char upper = upperCase(c);
           return (upper >= 'A' && upper <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
         });
}

std::string filledIn(const std::string& pattern, std::string_view host,
                     std::string_view iteration) {
  std::string path;
  path.reserve(pattern.size() + host.size() + iteration.size());
  std::string_view rest = pattern;
  for (std::size_t i = 0; (i = rest.find_first_of(kMarks)) != std::string_view::npos;) {
    const std::string_view mark = rest.substr(i, 1);
    const std::string_view value = mark[0] == kHostMark ? host : iteration;
    path.append(rest.substr(0, i)).append(value.empty() ? mark : value);
    rest.remove_prefix(i + 1);
  }
  return path.append(rest);
}

PatternMaker::PatternMaker(const std::string& settingsPath, std::int32_t settingsFileNumber)
    : expander(settingsPath, settingsFileNumber) {
  const ShortText temp = tempFolder();
  valuesArePlain = isPlainValue(settingsPath) && isPlainValue(temp);
  // The longest one made of the settings path is "_NAME_log".
  longestValue = std::max({kLongestHost, settingsPath.size() + 5, temp.length()});
}

PathPatterns PatternMaker::patternsOf(const PlannedTest& test) {
  const std::int32_t i = test.configIndex;
  return {known(dataPaths, &PatternMaker::twice, test.source, i),
          known(dataPaths, &PatternMaker::twice, test.dest, i),
          known(reportPaths, &PatternMaker::once, test.log, i),
          known(reportPaths, &PatternMaker::once, test.table, i)};
}

std::string PatternMaker::known(Known& patterns, Make make, const std::string& pathTemplate,
                                std::int32_t configIndex) {
  const bool hasLine = holds(pathTemplate, "[cfgline]") || holds(pathTemplate, "[cfgTaskID]");
  if (hasLine) return (this->*make)(pathTemplate, configIndex);
  const auto [pattern, isNew] = patterns.try_emplace(pathTemplate);
  if (isNew) pattern->second = (this->*make)(pathTemplate, configIndex);
  return pattern->second;
}

std::string PatternMaker::once(const std::string& pathTemplate, std::int32_t configIndex) const {
  if (!isPlain(pathTemplate)) return {};
  return std::string(expander.once(withMarks(pathTemplate), {}, configIndex, 0));
}

std::string PatternMaker::twice(const std::string& pathTemplate, std::int32_t configIndex) const {
  const std::string path = once(pathTemplate, configIndex);
  const bool isMarked = path.find_first_of(kMarks) != std::string::npos;
  // A file name alone could be that of the memory for one of the hosts.
  if (isMarked && path.find('/') == std::string::npos) return {};
  return isMemoryPath(path.c_str()) ? std::string()
                                    : std::string(expander.once(path, {}, configIndex, 0));
}

// What is filled in must not become part of a placeholder, so brackets come in pairs with nothing
// but text between them. And nothing may be cut on the way, whatever the values are.
bool PatternMaker::isPlain(std::string_view pathTemplate) const {
  if (!valuesArePlain || pathTemplate.find_first_of(kMarks) != std::string_view::npos) return false;
  std::size_t longest = pathTemplate.size();
  bool isOpen = false;
  for (const char c : pathTemplate) {
    if (c != '[' && c != ']') continue;
    if (isOpen != (c == ']')) return false;
    isOpen = !isOpen;
    if (isOpen) longest += longestValue;
  }
  return !isOpen && longest <= FixedString::capacity();
}

}  // namespace marrowbench::ctl
