#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "marrowctl/check/check.h"
#include "marrowctl/check/finding_groups.h"
#include "marrowctl/support/suggestion.h"

namespace marrowbench::ctl {

void addAllowFindings(const Survey& survey, FindingList& findings) {
  std::vector<std::string_view> known;
  for (const FindingKind& kind : findingKinds()) known.push_back(kind.name);
  for (const PlannedFile& file : survey.plan.files) {
    for (const AllowComment& comment : file.allows) {
      PlannedLine line;
      line.number = comment.number;
      line.text = comment.text;
      for (const AllowComment::Name& name : comment.names) {
        if (std::find(known.begin(), known.end(), name.text) != known.end()) continue;
        findings.onLine("unknown-allow", file, line, name.column,
                        {fmt::format("{} is no finding, so nothing is allowed by it{}",
                                     quoted(name.text), didYouMean(name.text, known)),
                         "name findings as they stand at the end of each: no-log, say"});
      }
    }
  }
}

}  // namespace marrowbench::ctl
