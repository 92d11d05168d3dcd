#ifndef MARROWBENCH_MARROWCTL_TABLE_READ_RESULTS_H
#define MARROWBENCH_MARROWCTL_TABLE_READ_RESULTS_H

#include <cstdint>
#include <functional>
#include <istream>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

struct ReadOptions {
  std::vector<std::string> tables;  ///< files, folders of *.csv files, patterns, or "-"
  const Plan* plan = nullptr;       ///< of the settings files that were run; null: not known
  std::vector<std::string> hosts;   ///< names of clients to be found in paths; empty: not known
  std::string hostPattern;  ///< regular expression whose first group is the host; empty: none
  std::int64_t gapSeconds = 1800;  ///< without a row under way, after which a new run begins
  bool allRuns = false;            ///< judge all runs together, not only the newest
  /// Called now and then with the bytes read so far and those of all files; may be empty.
  std::function<void(std::uint64_t, std::uint64_t)> progress;
};

struct ReadOutcome {
  ResultSet set;
  std::string problem;  ///< why it could not be done, with the path in front; empty: it is done
};

/// Reads tables and finds out which client, test, iteration and run each row belongs to.
[[nodiscard]] ReadOutcome readResults(const ReadOptions& options);

}  // namespace marrowbench::ctl

#endif
