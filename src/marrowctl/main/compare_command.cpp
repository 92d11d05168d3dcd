#include <string>

#include "marrowctl/main/commands.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/read_tables.h"
#include "marrowctl/main/table_options.h"
#include "marrowctl/report/compare.h"
#include "marrowctl/report/page/compare_page.h"
#include "marrowctl/support/terminal.h"

namespace marrowbench::ctl {
namespace {

Outcome printed(const Comparison& comparison, const CompareCommand& command) {
  const bool isLoss = command.failIfSlower && hasLoss(comparison, *command.failIfSlower);
  return {isLoss ? isSlower : done,
          command.isJson ? compareJson(comparison) : compareText(comparison, styleOf(stdout)), ""};
}

}  // namespace

Outcome runCompare(const CompareCommand& command) {
  if (const auto outcome = refusedPage("compare", command.page)) return *outcome;
  TableSource source;
  if (const auto outcome = prepareSource("compare", command.from, source)) return *outcome;
  const ReadOutcome before =
      readTables("compare", readOptionsOf(command.from, source, {command.oldTables}));
  if (!before.problem.empty()) return impossible("compare", before.problem);
  const ReadOutcome after =
      readTables("compare", readOptionsOf(command.from, source, {command.newTables}));
  if (!after.problem.empty()) return impossible("compare", after.problem);

  const Comparison comparison = compare(before.set, after.set);
  if (command.page.file.empty()) return printed(comparison, command);
  return withPage("compare", command.page,
                  comparePageOf({comparison, before.set, after.set}, kPageMaker),
                  [&] { return printed(comparison, command); });
}

}  // namespace marrowbench::ctl
