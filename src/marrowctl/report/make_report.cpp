#include "marrowctl/report/make_report.h"

#include <utility>

#include "marrowctl/report/completeness.h"
#include "marrowctl/report/error_groups.h"
#include "marrowctl/report/suspicions.h"
#include "marrowctl/report/tally.h"

namespace marrowbench::ctl {

Report makeReport(ResultSet results, const ReportOptions& options) {
  Report report;
  report.results = std::move(results);
  const std::vector<MovedRows> counts = tallyTests(report);
  const std::vector<FirstIteration> firsts = measureTests(report, counts);
  judge(report, options);
  report.suspicions = suspicionsOf(report, firsts, options.linkBytesPerSecond);
  if (report.rows.errors > 0) report.errors = errorGroups(report.results);
  return report;
}

std::vector<ResultRow> sampleRows(const ResultSet& results, std::size_t most) {
  std::vector<ResultRow> sample;
  if (most == 0) return sample;
  std::uint64_t seen = 0;
  for (RowCursor rows(results, Unpacking::nothing); rows.next(); ++seen) {
    // The first row of each of `most` equal parts.
    const bool isTaken = sample.size() * results.judgedRows <= seen * most;
    if (isTaken) sample.push_back(rows.row());
  }
  return sample;
}

}  // namespace marrowbench::ctl
