#ifndef MARROWBENCH_MARROWCTL_MAIN_READ_TABLES_H
#define MARROWBENCH_MARROWCTL_MAIN_READ_TABLES_H

#include <string>

#include "marrowctl/table/read_results.h"

namespace marrowbench::ctl {

/// readResults(), which shows on the standard error what was read of what there is, and how long it
/// will still take, when it takes long.
[[nodiscard]] ReadOutcome readTables(const std::string& subcommand, ReadOptions options);

}  // namespace marrowbench::ctl

#endif
