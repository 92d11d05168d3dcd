#ifndef MARROWBENCH_MARROWCTL_PLAN_TOTALS_H
#define MARROWBENCH_MARROWCTL_PLAN_TOTALS_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "marrowctl/plan/file_sizes.h"
#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// What a plan comes to. Rows count lines with a table only; a chain that leads back is counted for
/// one pass.
struct Totals {
  std::int64_t clients = 0;
  std::int64_t rowsPerClient = 0;
  std::int64_t rows = 0;             ///< of all clients
  std::int64_t bytesWritten = 0;     ///< of all clients, iterations included
  std::int64_t bytesRead = 0;        ///< the same; sources whose size is not known are left out
  std::int64_t filesLeft = 0;        ///< different files that the tests of all clients write
  std::int64_t pauseMs = 0;          ///< per client: the pause after every chunk, the last one too
  std::int64_t pauseSeconds = 0;     ///< the same in whole seconds, rounded up
  std::int64_t memoryBytes = 0;      ///< per client: the largest test's buffer
  std::vector<std::string> markers;  ///< done markers of the named hosts
  std::map<std::string, std::int64_t> spaceByFolder;  ///< bytes of new files, of all clients
  std::vector<int> unknownSizes;  ///< indices into the plan's tests, in order of the plan
  /// Bytes that each of the plan's tests moves on the first client, iterations included;
  /// kUnknownSize where one of them is not known.
  std::vector<std::int64_t> movedByTest;
  /// Pauses of each of the plan's tests on the first client, iterations included.
  std::vector<std::int64_t> pauseMsByTest;
};

[[nodiscard]] Totals totalsOf(const Plan& plan);

}  // namespace marrowbench::ctl

#endif
