#include <string>

#include "marrowctl/main/commands.h"
#include "marrowctl/main/table_options.h"
#include "marrowctl/report/compare.h"
#include "marrowctl/support/terminal.h"

namespace marrowbench::ctl {

Outcome runCompare(const CompareCommand& command) {
  TableSource source;
  if (const auto outcome = prepareSource("compare", command.from, source)) return *outcome;
  const ReadOutcome before = readResults(readOptionsOf(command.from, source, {command.oldTables}));
  if (!before.problem.empty()) return impossible("compare", before.problem);
  const ReadOutcome after = readResults(readOptionsOf(command.from, source, {command.newTables}));
  if (!after.problem.empty()) return impossible("compare", after.problem);

  const Comparison comparison = compare(before.set, after.set);
  const bool isLoss = command.failIfSlower && hasLoss(comparison, *command.failIfSlower);
  return {isLoss ? isSlower : done,
          command.isJson ? compareJson(comparison) : compareText(comparison, styleOf(stdout)), ""};
}

}  // namespace marrowbench::ctl
