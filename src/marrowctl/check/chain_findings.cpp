#include <fmt/format.h>

#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/support/units.h"
#include "support/fixed_string.h"

namespace marrowbench::ctl {
namespace {

const PlannedLine* chainLineOf(const PlannedFile& file) {
  const bool hasOne = !file.lines.empty() && file.lines.back().kind == LineKind::chain;
  return hasOne ? &file.lines.back() : nullptr;
}

// The last field is what ends in ".bst".
void addUnintendedChain(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  const std::size_t separator = line.text.rfind(';');
  if (separator == std::string::npos) return;
  const int column = static_cast<int>(separator) + 1 +
                     firstColumnOf(std::string_view(line.text).substr(separator + 1));
  findings.onLine(
      "unintended-chain", file, line, column,
      {"the line ends in .bst, so all of it names the next settings file: no test is run, "
       "and the client waits for a file of that name",
       "give the table another ending, .csv, and write the done flag behind it"});
}

void addBehindChain(const PlannedFile& file, FindingList& findings) {
  if (file.behindChain.length == 0) return;
  findings.onLine("behind-chain", file, file.behindChain,
                  {fmt::format("nothing behind the chain line {} is read", file.chainLine),
                   "move the chain line to the end of the file"});
}

void addNext(const PlannedFile& file, const PlannedLine& line, bool isMissing,
             FindingList& findings) {
  if (file.chainsBack) {
    findings.onLine("chain-cycle", file, line,
                    {fmt::format("{} was run before: the clients go round until they are stopped",
                                 quoted(file.chain)),
                     "remove the line, unless they are to; the totals are those of one pass"});
  } else if (isMissing) {
    findings.onLine(
        "chain-missing", file, line,
        {fmt::format("{} does not exist: the client will wait for it, with a dot every 5 s",
                     quoted(file.chain)),
         "mind that a chain path starts in the folder where the client was started; "
         "[cfgPath] in front stands for this file's folder"});
  }
}

// Where each client has a file of its own, the first one's is a file of the plan.
void addOthers(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  if (file.missingChains.empty()) return;
  const MissingChain& first = file.missingChains.front();
  const auto more = static_cast<std::int64_t>(file.missingChains.size()) - 1;
  findings.onLine(
      "chain-missing", file, line,
      {fmt::format("{} of {}{} does not exist: who lacks it will wait for it, with a dot every 5 s",
                   quoted(first.path), first.host,
                   more == 0 ? "" : ", like those of " + shownCount(more, "more client") + ","),
       "put a file there for each client"});
}

void addUnknownName(const PlannedFile& file, FindingList& findings) {
  if (file.path == "-" || endsWithIgnoreCase(std::string_view(file.path), ".bst")) return;
  findings.onFile(
      "not-a-settings-name", file,
      {"the name does not end in .bst: the program refuses it with \"Unknown commandline "
       "flags\"",
       "rename the file"});
}

}  // namespace

void addChainFindings(const Survey& survey, FindingList& findings) {
  std::unordered_map<std::string_view, bool> isMissing;
  std::unordered_set<std::string_view> targets;
  for (const PlannedFile& file : survey.plan.files) {
    isMissing[file.path] = !file.exists;
    targets.insert(file.chain);
  }
  for (const PlannedFile& file : survey.plan.files) {
    if (!targets.contains(file.path)) addUnknownName(file, findings);
    addBehindChain(file, findings);
    const PlannedLine* const line = chainLineOf(file);
    if (line == nullptr) continue;
    addUnintendedChain(file, *line, findings);
    addNext(file, *line, isMissing[file.chain], findings);
    addOthers(file, *line, findings);
  }
}

}  // namespace marrowbench::ctl
