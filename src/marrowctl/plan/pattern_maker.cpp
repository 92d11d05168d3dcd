#include "marrowctl/plan/pattern_maker.h"

#include <algorithm>

#include "marrowctl/plan/expansion.h"
#include "marrowctl/plan/one_spelling.h"
#include "paths/folders.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kMarks("\x01\x02\x03", 3);
// With its sign.
constexpr std::size_t kLongestIteration = 11;
constexpr std::size_t kLongestDate = 10;

bool hasMarks(std::string_view text) { return std::any_of(text.begin(), text.end(), isMark); }

FixedString withMarks(std::string_view pathTemplate) {
  FixedString marked = pathTemplate;
  marked.replaceAll("[host]", kMarks.substr(0, 1));
  marked.replaceAll("[iter]", kMarks.substr(1, 1));
  marked.replaceAll("[date]", kMarks.substr(2, 1));
  return marked;
}

bool isPlainValue(std::string_view value) {
  return value.find_first_of("[]") == std::string_view::npos && !hasMarks(value);
}

// A file name alone could be that of the memory for one of the clients.
bool couldBeMemory(std::string_view pattern) {
  constexpr std::string_view kMemory = "MEMORY";
  const std::size_t first = pattern.find_first_of(kMarks);
  if (first == std::string_view::npos || pattern.find('/') != std::string_view::npos) return false;
  const std::string_view head = pattern.substr(0, first);
  const std::string_view tail = pattern.substr(pattern.find_last_of(kMarks) + 1);
  return (head.empty() || startsWithIgnoreCase(kMemory, head)) &&
         (tail.empty() || endsWithIgnoreCase(kMemory, tail));
}

}  // namespace

PatternMaker::PatternMaker(const std::string& settingsPath, std::int32_t settingsFileNumber)
    : expander(settingsPath, settingsFileNumber) {
  const ShortText temp = tempFolder();
  valuesArePlain = isPlainValue(settingsPath) && isPlainValue(temp);
  // The longest one made of the settings path is "_NAME_log".
  longestValue = std::max({kLongestIteration, settingsPath.size() + 5, temp.length()});
}

PathPatterns PatternMaker::patternsOf(const PlannedTest& test) {
  const std::int32_t i = test.configIndex;
  return {known(dataPaths, &PatternMaker::dataPath, test.source, i),
          known(dataPaths, &PatternMaker::dataPath, test.dest, i),
          known(reportPaths, &PatternMaker::reportPath, test.log, i),
          known(reportPaths, &PatternMaker::reportPath, test.table, i)};
}

PathPattern PatternMaker::known(KnownPatterns& patterns, Make make, const std::string& pathTemplate,
                                std::int32_t configIndex) {
  const auto [place, isNew] = patterns.try_emplace(pathTemplate);
  Known& entry = place->second;
  if (isNew) {
    entry.differsByLine = holds(pathTemplate, "[cfgline]") || holds(pathTemplate, "[cfgTaskID]");
  }
  if (isNew || entry.differsByLine) entry.pattern = (this->*make)(pathTemplate, configIndex);
  return entry.pattern;
}

PathPattern PatternMaker::reportPath(const std::string& pathTemplate,
                                     std::int32_t configIndex) const {
  const FixedString marked = withMarks(pathTemplate);
  return {std::string(expander.once(marked, {}, configIndex, 0)),
          !hasMarks(pathTemplate) && isPlain(marked)};
}

PathPattern PatternMaker::dataPath(const std::string& pathTemplate,
                                   std::int32_t configIndex) const {
  PathPattern pattern = reportPath(pathTemplate, configIndex);
  if (isMemoryPath(pattern.text.c_str())) {
    pattern.text.clear();
    return pattern;
  }
  pattern.isExact = pattern.isExact && !couldBeMemory(pattern.text);
  pattern.text = std::string(expander.once(pattern.text, {}, configIndex, 0));
  pattern.name = oneSpelling(pattern.text);
  return pattern;
}

// What is filled in must not become part of a placeholder, so brackets come in pairs with nothing
// but text between them. And nothing may be cut on the way, whatever the values are.
bool PatternMaker::isPlain(std::string_view marked) const {
  if (!valuesArePlain) return false;
  std::size_t longest = marked.size();
  bool isOpen = false;
  for (const char c : marked) {
    if (c == kHostMark) longest += kLongestHost;
    if (c == kIterationMark) longest += kLongestIteration;
    if (c == kDateMark) longest += kLongestDate;
    if (isOpen && isMark(c)) return false;
    if (c != '[' && c != ']') continue;
    if (isOpen != (c == ']')) return false;
    isOpen = !isOpen;
    if (isOpen) longest += longestValue;
  }
  return !isOpen && longest <= FixedString::capacity();
}

}  // namespace marrowbench::ctl
