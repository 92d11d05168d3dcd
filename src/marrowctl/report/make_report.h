#ifndef MARROWBENCH_MARROWCTL_REPORT_MAKE_REPORT_H
#define MARROWBENCH_MARROWCTL_REPORT_MAKE_REPORT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/report/report.h"
#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

struct ReportOptions {
  const Plan* plan = nullptr;      ///< of the settings files that were run; null: not known
  std::vector<std::string> hosts;  ///< clients that there should be; empty: not known
  std::int64_t clients = 0;        ///< how many; 0: not known
  std::string doneFolder;          ///< where the markers are; empty: not looked at
  std::optional<double> linkBytesPerSecond;  ///< of a client's link
};

/// Judges the rows. @param results  taken over by the report
[[nodiscard]] Report makeReport(ResultSet results, const ReportOptions& options);

/// At most so many rows of the judged runs, spread evenly over them.
[[nodiscard]] std::vector<ResultRow> sampleRows(const ResultSet& results, std::size_t most);

}  // namespace marrowbench::ctl

#endif
