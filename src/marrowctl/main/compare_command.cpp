#include <fmt/format.h>

#include <iterator>
#include <string>

#include "marrowctl/main/commands.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/read_tables.h"
#include "marrowctl/main/table_options.h"
#include "marrowctl/report/compare.h"
#include "marrowctl/report/page/compare_page.h"
#include "marrowctl/support/terminal.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

std::string notJudged(const Comparison& comparison, std::int64_t count, const char* why) {
  if (count == 0) return {};
  return fmt::format("marrowctl compare: --fail-if-slower can't judge {} of {}: {}\n",
                     shownCount(count), shownCount(std::ssize(comparison.tests), "test"), why);
}

// A script that asks whether anything is slower is not to take silence for a no.
std::string notJudged(const Comparison& comparison, double percent) {
  return notJudged(comparison, countOfTooFewRows(comparison),
                   "fewer than 5 rows with a speed on a side") +
         notJudged(comparison, countOfTooScattered(comparison, percent),
                   "the median is beyond the limit, but rows scatter too much to tell");
}

Outcome printed(const Comparison& comparison, const CompareCommand& command) {
  const bool isLoss = command.failIfSlower && hasLoss(comparison, *command.failIfSlower);
  return {isLoss ? isSlower : done,
          command.isJson ? compareJson(comparison) : compareText(comparison, styleOf(stdout)),
          command.failIfSlower ? notJudged(comparison, *command.failIfSlower) : ""};
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
