#include "marrowctl/check/output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <span>

#include "marrowctl/check/check.h"
#include "marrowctl/check/text_parts.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

// Those that are not run count, too.
std::size_t testsIn(const PlannedFile& file) {
  return static_cast<std::size_t>(
      std::count_if(file.lines.begin(), file.lines.end(),
                    [](const PlannedLine& line) { return line.kind == LineKind::test; }));
}

// Prose is wrapped; examples, which are indented, stay as they are.
std::string setProse(std::string_view text, int width) {
  std::string set;
  std::string paragraph;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const bool isProse = !line.empty() && !line.starts_with(' ');
    if (isProse) paragraph.append(paragraph.empty() ? "" : " ").append(line);
    if (isProse && !text.empty()) continue;
    set += wrapped(paragraph, 0, width);
    paragraph.clear();
    if (!isProse) set.append(line).append("\n");
  }
  return set;
}

}  // namespace

std::string checkText(const Plan& plan, const Totals& totals, const std::vector<Finding>& findings,
                      const TextStyle& style) {
  const Survey survey(plan);
  std::string text;
  std::span<const std::int64_t> moved(totals.movedByTest);
  for (const PlannedFile& file : plan.files) {
    text += linesText(plan, file, moved, style) + pathsText(survey, file, style) + "\n";
    moved = moved.subspan(testsIn(file));
  }
  text += totalsText(totals, style) + "\n";
  return text + findingsText(findings, style) + countsText(findings, style);
}

std::string checkSummary(const Totals& totals, const std::vector<Finding>& findings,
                         const TextStyle& style) {
  std::map<std::string_view, std::int64_t> counts;
  for (const Finding& finding : findings) ++counts[finding.name];
  std::string text = totalsText(totals, style) + "\n";
  for (const auto& [name, count] : counts) {
    text += fmt::format("  {:>6}  {}\n", shownCount(count), name);
  }
  return text + countsText(findings, style);
}

std::string checkGcc(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    text +=
        fmt::format("{}:{}:{}: {}: {}; {} [{}]\n", printable(finding.file),
                    finding.line.value_or(1), finding.column.value_or(1), nameOf(finding.severity),
                    printable(finding.message), printable(finding.remedy), finding.name);
  }
  return text;
}

std::optional<std::string> explanationOf(std::string_view name, const TextStyle& style) {
  const auto& kinds = findingKinds();
  const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                 [name](const FindingKind& k) { return k.name == name; });
  if (kind == kinds.end()) return std::nullopt;
  return fmt::format("{} ({})\n\n{}", toned(name, Tone::strong, style), nameOf(kind->severity),
                     setProse(kind->explanation, style.width));
}

}  // namespace marrowbench::ctl
