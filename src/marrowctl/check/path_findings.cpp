#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <string>
#include <string_view>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/plan/client_paths.h"
#include "marrowctl/support/suggestion.h"
#include "support/fixed_string.h"

namespace marrowbench::ctl {
namespace {

constexpr std::array<std::string_view, 11> kPlaceholders = {
    "host",       "date",      "iter",    "cfgline", "cfgTaskID", "cfgID",
    "cfgLogName", "cfgNameID", "cfgName", "cfgPath", "temp"};
constexpr std::size_t kCapacity = FixedString::capacity();
// Names of locks have room for 250 characters and are created with 249 of them.
constexpr std::size_t kNoRoomForLock = 249;

struct PathField {
  Field field;
  PathPattern PathPatterns::*pattern;
  std::string PlannedTest::*pathTemplate;
};

constexpr std::array<PathField, 4> kPaths = {{
    {Field::source, &PathPatterns::source, &PlannedTest::source},
    {Field::dest, &PathPatterns::dest, &PlannedTest::dest},
    {Field::log, &PathPatterns::log, &PlannedTest::log},
    {Field::table, &PathPatterns::table, &PlannedTest::table},
}};

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-';
}

bool isPlaceholder(std::string_view word) {
  return std::any_of(kPlaceholders.begin(), kPlaceholders.end(), [word](std::string_view known) {
    return std::equal(known.begin(), known.end(), word.begin(), word.end(),
                      [](char a, char b) { return upperCase(a) == upperCase(b); });
  });
}

// "[1]" may well be meant; a word begins with a letter.
std::vector<std::string_view> unknownWordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  for (std::size_t open = text.find('['); open != std::string_view::npos;
       open = text.find('[', open + 1)) {
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(open) + 1;
    const auto end = std::find_if_not(begin, text.end(), isWordCharacter);
    const std::string_view word = text.substr(open + 1, static_cast<std::size_t>(end - begin));
    const bool isWord = end != text.end() && *end == ']' && !word.empty() &&
                        std::isalpha(static_cast<unsigned char>(word.front())) != 0;
    if (isWord && !isPlaceholder(word)) words.push_back(word);
  }
  return words;
}

Advice unknownPlaceholder(std::string_view word) {
  return {fmt::format("[{}] is no placeholder and stays as it is{}", word,
                      didYouMean(word, kPlaceholders)),
          "there are [host], [date], [iter], [cfgline], [cfgTaskID], [cfgID], [cfgLogName], "
          "[cfgNameID], [cfgName], [cfgPath] and [temp]"};
}

void addPlaceholders(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  if (line.kind == LineKind::chain) {
    for (const std::string_view word : unknownWordsOf(trimmedText(line.text))) {
      findings.onLine("unknown-placeholder", file, line, unknownPlaceholder(word));
    }
  }
  if (line.kind != LineKind::test || !line.test.isRun) return;
  for (const PathField& path : kPaths) {
    for (const std::string_view word : unknownWordsOf(line.fields[indexOf(path.field)].text)) {
      findings.onField("unknown-placeholder", file, line, path.field, unknownPlaceholder(word));
    }
  }
}

bool endsInPath(const std::string& resolved, std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return std::string_view(resolved).ends_with(text);
}

// A template that fills its room exactly still ends as it was written.
bool isCutTemplate(const std::string& text, const std::string& resolved) {
  return text.size() > kCapacity || (resolved.size() == kCapacity && !endsInPath(resolved, text));
}

// The lengths that the path has over clients and iterations. Where a name changes the folding of
// the path they may be off, which nobody with paths near the limits will have.
std::set<std::size_t> lengthsOf(const Survey& survey, const SurveyedTest& test,
                                const PathPattern& pattern) {
  const auto count = [&pattern](char mark) {
    return static_cast<std::size_t>(std::count(pattern.text.begin(), pattern.text.end(), mark));
  };
  constexpr std::size_t kDateLength = 10;
  const std::size_t fixed = pattern.text.size() + count(kDateMark) * (kDateLength - 1);
  const std::size_t hostMarks = count(kHostMark);
  const std::size_t iterationMarks = count(kIterationMark);
  const std::size_t digits = std::to_string(test.test().lastIteration()).size();
  std::set<std::size_t> nameLengths = {1};
  if (hostMarks > 0) {
    nameLengths.clear();
    for (const std::string& host : survey.plan.hosts) nameLengths.insert(host.size());
  }
  std::set<std::size_t> lengths;
  for (const std::size_t name : nameLengths) {
    for (std::size_t d = 1; d <= (iterationMarks > 0 ? digits : 1); ++d) {
      lengths.insert(fixed - hostMarks - iterationMarks + hostMarks * name + iterationMarks * d);
    }
  }
  return lengths;
}

// An expansion of exactly 500 characters may be whole: with one plain character less it is shorter.
bool fillsByChance(const SurveyedTest& test, const PathField& path) {
  PlannedTest shorter = test.test();
  shorter.patterns = {};  // of the whole template
  std::string& text = shorter.*path.pathTemplate;
  const std::size_t plain = text.find_first_not_of("./[]", text.rfind(']') + 1);
  if (plain == std::string::npos) return false;
  text.erase(plain, 1);
  const PathPattern& pattern = shorter.patterns.*path.pattern;
  return ClientPaths("-").path(*test.file, shorter, pattern, 0).size() < kCapacity;
}

bool isCutExpansion(const SurveyedTest& test, const PathField& path,
                    const std::set<std::size_t>& lengths) {
  if (!lengths.empty() && *lengths.rbegin() > kCapacity) return true;
  return (test.test().patterns.*path.pattern).text.size() >= kCapacity &&
         !fillsByChance(test, path);
}

void addTooLong(const SurveyedTest& test, Field field, std::string message, FindingList& findings) {
  findings.onField(
      "path-too-long", test, field,
      {std::move(message), "shorten the names, or keep the settings file nearer to its data"});
}

void addLockName(const SurveyedTest& test, const std::set<std::size_t>& lengths,
                 FindingList& findings) {
  if (lengths.contains(kNoRoomForLock)) {
    addTooLong(
        test, Field::table,
        "the table's path has 249 characters: its lock would bear the table's own name, so no "
        "row is written",
        findings);
  } else if (*lengths.rbegin() > kNoRoomForLock) {
    findings
        .onField(
            "path-too-long", test, Field::table,
            {fmt::format("the table's path has {} characters: its lock is named by the first 249, "
                         "and other tables may share it",
                         *lengths.rbegin()),
             "shorten it to 241 characters or fewer"})
        .severity = Severity::warning;
  }
}

void addLengths(const Survey& survey, const SurveyedTest& test, FindingList& findings) {
  for (const PathField& path : kPaths) {
    const PathPattern& pattern = test.test().patterns.*path.pattern;
    if (pattern.isEmpty()) continue;
    const std::set<std::size_t> lengths = lengthsOf(survey, test, pattern);
    if (isCutTemplate(test.text(path.field), test.test().*path.pathTemplate)) {
      addTooLong(test, path.field, "the path has more than 500 characters: the rest is cut",
                 findings);
    } else if (isCutExpansion(test, path, lengths)) {
      addTooLong(
          test, path.field,
          "with its placeholders replaced the path has more than 500 characters: the rest is cut",
          findings);
    } else if (path.field == Field::table && test.hasTable()) {
      addLockName(test, lengths, findings);
    }
  }
}

void addChainLength(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  const std::string_view text = trimmedText(line.text);
  const bool isCut = text.size() > kCapacity || file.chain.size() >= kCapacity;
  if (line.kind != LineKind::chain || !isCut || text.size() == file.chain.size()) return;
  findings.onLine(
      "path-too-long", file, line,
      {"the path of the next settings file has more than 500 characters: the rest is cut",
       "shorten the names"});
}

void addCommas(const Survey& survey, const SurveyedTest& test, FindingList& findings) {
  if (!test.hasTable() || !test.isRepeated()) return;
  for (const PathField& path : kPaths) {
    const bool isCell = path.field == Field::source || path.field == Field::dest;
    const PathPattern& pattern = test.test().patterns.*path.pattern;
    if (!isCell || pattern.isEmpty()) continue;
    if (survey.path(test, pattern, 0, 0).find(',') == std::string::npos) continue;
    findings.onField(
        "comma-in-path", test, path.field,
        {"a comma in the path splits the cells of the row: those behind it move to the right",
         "name files and folders without commas, the settings file's folder too"});
  }
}

}  // namespace

void addPathFindings(const Survey& survey, FindingList& findings) {
  for (const PlannedFile& file : survey.plan.files) {
    for (const PlannedLine& line : file.lines) {
      addPlaceholders(file, line, findings);
      addChainLength(file, line, findings);
    }
  }
  for (const SurveyedTest& test : survey.tests) {
    addLengths(survey, test, findings);
    addCommas(survey, test, findings);
  }
}

}  // namespace marrowbench::ctl
