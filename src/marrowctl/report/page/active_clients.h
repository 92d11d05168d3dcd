#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_ACTIVE_CLIENTS_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_ACTIVE_CLIENTS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "marrowctl/report/report.h"

namespace marrowbench::ctl {

/// A pause between two rows of a client in which it still counts as active, seconds: it writes its
/// row, and waits for the table's lock.
inline constexpr double kBridgedPause = 10;

/// What a test delivered while so many clients were active in it.
struct ActivePoint {
  std::size_t clients = 0;
  double seconds = 0;             ///< for which so many were active, all stretches together
  double mibPerSecond = 0;        ///< of all clients together, over these seconds
  double medianMibPerSecond = 0;  ///< of the rows in whose middle so many were active; 0: none
};

/// For each test the numbers of active clients that lasted for at least a second, in rising order.
/// A client is active from a row's start to its end and in short pauses between two rows.
[[nodiscard]] std::vector<std::vector<ActivePoint>> activePointsOf(const Report& report);

}  // namespace marrowbench::ctl

#endif
