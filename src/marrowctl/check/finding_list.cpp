#include "marrowctl/check/finding_list.h"

#include <algorithm>

#include "marrowctl/check/check.h"
#include "marrowctl/support/utf8.h"
#include "settings/settings_fields.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kTrimmed{"\0\t\n\r ", 5};
// More of a line is never parsed, nor shown.
constexpr std::size_t kShownOfLine = 1100;
constexpr std::size_t kLongestQuote = 160;

Severity usualSeverityOf(std::string_view name) {
  const auto& kinds = findingKinds();
  const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                 [name](const FindingKind& k) { return k.name == name; });
  return kind == kinds.end() ? Severity::error : kind->severity;
}

}  // namespace

Finding& FindingList::onFile(std::string_view name, const PlannedFile& file, Advice advice) {
  Finding finding;
  finding.name = name;
  finding.severity = usualSeverityOf(name);
  finding.file = file.path;
  finding.message = std::move(advice.message);
  finding.remedy = std::move(advice.remedy);
  return all.emplace_back(std::move(finding));
}

Finding& FindingList::onLine(std::string_view name, const PlannedFile& file,
                             const PlannedLine& line, int column, Advice advice) {
  Finding& finding = onFile(name, file, std::move(advice));
  finding.line = line.number;
  finding.column = column;
  finding.lineText = line.text.substr(0, kShownOfLine);
  return finding;
}

Finding& FindingList::onLine(std::string_view name, const PlannedFile& file,
                             const PlannedLine& line, Advice advice) {
  return onLine(name, file, line, firstColumnOf(line.text), std::move(advice));
}

Finding& FindingList::onField(std::string_view name, const PlannedFile& file,
                              const PlannedLine& line, Field field, Advice advice) {
  const int column = line.fields[indexOf(field)].column;
  Finding& finding = onLine(name, file, line, column, std::move(advice));
  finding.field = std::string(kSettingsFields[indexOf(field)].name);
  return finding;
}

int firstColumnOf(std::string_view line) {
  const std::size_t first = line.find_first_not_of(kTrimmed);
  return first == std::string_view::npos ? 1 : static_cast<int>(first) + 1;
}

std::string_view trimmedText(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kTrimmed), text.size()));
  return text.substr(0, text.find_last_not_of(kTrimmed) + 1);
}

std::string quoted(std::string_view text) {
  if (text.size() <= kLongestQuote) return "\"" + printable(text) + "\"";
  const std::string_view tail = text.substr(text.size() - kLongestQuote / 2);
  return "\"" + printable(text.substr(0, kLongestQuote / 2)) + "..." + printable(tail) + "\"";
}

}  // namespace marrowbench::ctl
