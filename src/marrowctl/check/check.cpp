#include "marrowctl/check/check.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "marrowctl/check/finding_groups.h"

namespace marrowbench::ctl {
namespace {

constexpr auto kGroups = {addLineFindings,   addChainFindings, addNumberFindings,
                          addEffectFindings, addPathFindings,  addFolderFindings,
                          addDataFindings,   addTableFindings, addAllowFindings};

using FileNumbers = std::unordered_map<std::string_view, std::size_t>;

FileNumbers numbersOf(const std::vector<PlannedFile>& files) {
  FileNumbers numbers;
  for (const PlannedFile& file : files) numbers.emplace(file.path, numbers.size());
  return numbers;
}

// A file that begins with a byte order mark: whatever its first line does is the mark's doing. An
// indented comment likewise, unless it has become a chain.
bool isExplainedByAnother(const PlannedFile& file, const Finding& finding) {
  if (finding.name == "byte-order-mark" || finding.name == "comment-indented") return false;
  if (!finding.line) return false;
  if (file.hasByteOrderMark && *finding.line == 1) return true;
  const bool isComment = trimmedText(finding.lineText).starts_with('#');
  return isComment && finding.name != "unknown-allow" &&
         std::any_of(file.lines.begin(), file.lines.end(), [&finding](const PlannedLine& line) {
           return line.number == *finding.line && line.kind == LineKind::rejected;
         });
}

bool isAllowed(const PlannedFile& file, const std::string& name) {
  return std::any_of(file.allows.begin(), file.allows.end(), [&name](const AllowComment& comment) {
    return std::any_of(comment.names.begin(), comment.names.end(),
                       [&name](const AllowComment::Name& allowed) { return allowed.text == name; });
  });
}

}  // namespace

std::vector<Finding> check(const Plan& plan) { return check(plan, totalsOf(plan)); }

std::vector<Finding> check(const Plan& plan, const Totals& totals, Allowance allowance) {
  const Survey survey(plan);
  FindingList findings;
  for (const auto addGroup : kGroups) addGroup(survey, findings);
  addSizeFindings(survey, totals, findings);

  const FileNumbers numbers = numbersOf(plan.files);
  auto& all = findings.all;
  std::erase_if(all, [&](const Finding& finding) {
    const PlannedFile& file = plan.files[numbers.at(finding.file)];
    const bool mayBeAllowed = allowance == Allowance::all || finding.severity != Severity::error;
    return isExplainedByAnother(file, finding) || (mayBeAllowed && isAllowed(file, finding.name));
  });
  const auto place = [&numbers](const Finding& finding) {
    return std::tuple(numbers.at(finding.file), finding.line.value_or(0),
                      finding.column.value_or(0));
  };
  std::stable_sort(all.begin(), all.end(),
                   [&](const Finding& a, const Finding& b) { return place(a) < place(b); });
  return std::move(all);
}

int exitStatusOf(const std::vector<Finding>& findings, bool strict) {
  const auto has = [&findings](Severity severity) {
    return std::any_of(findings.begin(), findings.end(),
                       [severity](const Finding& finding) { return finding.severity == severity; });
  };
  if (has(Severity::error)) return 2;
  return strict && has(Severity::warning) ? 1 : 0;
}

}  // namespace marrowbench::ctl
