#ifndef MARROWBENCH_MARROWCTL_TABLE_READ_RESULTS_H
#define MARROWBENCH_MARROWCTL_TABLE_READ_RESULTS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/table/result_set.h"
#include "marrowctl/table/table_file.h"

namespace marrowbench::ctl {

/// How far the reading is.
struct ReadProgress {
  std::uint64_t bytes = 0;     ///< that were read
  std::uint64_t allBytes = 0;  ///< of all tables
  std::size_t table = 0;       ///< number of the one that is read, from 1
  std::size_t tables = 0;
};

struct ReadOptions {
  std::vector<std::string> tables;  ///< files, folders of *.csv files, patterns, or "-"
  const Plan* plan = nullptr;       ///< of the settings files that were run; null: not known
  std::vector<std::string> hosts;   ///< names of clients to be found in paths; empty: not known
  std::string hostPattern;  ///< regular expression whose first group is the host; empty: none
  std::int64_t gapSeconds = 1800;  ///< without a row under way, after which a new run begins
  bool allRuns = false;            ///< judge all runs together, not only the newest
  std::string onlyHost;  ///< all rows are this client's; empty: whose they are is found out
  std::optional<LineChoice> choice;                   ///< which lines count; empty: all
  std::function<void(const ReadProgress&)> progress;  ///< called now and then; may be empty
};

struct ReadOutcome {
  ResultSet set;
  std::string problem;  ///< why it could not be done, with the path in front; empty: it is done
};

/// Reads tables and finds out which client, test, iteration and run each row belongs to.
[[nodiscard]] ReadOutcome readResults(const ReadOptions& options);

}  // namespace marrowbench::ctl

#endif
