#ifndef MARROWBENCH_MARROWCTL_REPORT_TALLY_H
#define MARROWBENCH_MARROWCTL_REPORT_TALLY_H

#include <cstdint>
#include <vector>

#include "marrowctl/report/report.h"
#include "marrowctl/report/speeds.h"

namespace marrowbench::ctl {

/// How the first iteration of a test compares with later ones.
struct FirstIteration {
  double firstMedian = 0, laterMedian = 0;  ///< MiB/s; 0: there are none
};

/// Counts rows, finds when each client of each test began and ended, and sums bytes over the
/// windows in which all clients of a test were active.
///
/// A client whose rows all failed is left out of the window, and where the settings tell how many
/// rows there should be, also one that has under 90 % of them.
///
/// @return for each series the rows that moved something
[[nodiscard]] std::vector<MovedRows> tallyTests(Report& report);

/// Fills in the distributions of each test and of each of its clients, and the stragglers.
///
/// @param counts  as tallyTests() returns them
/// @return for each test its first iterations
[[nodiscard]] std::vector<FirstIteration> measureTests(Report& report,
                                                       const std::vector<MovedRows>& counts);

}  // namespace marrowbench::ctl

#endif
