#ifndef MARROWBENCH_MARROWCTL_REPORT_TALLY_H
#define MARROWBENCH_MARROWCTL_REPORT_TALLY_H

#include <cstdint>
#include <vector>

#include "marrowctl/report/report.h"

namespace marrowbench::ctl {

/// Counts rows, finds when each client of each test began and ended, and sums bytes over the
/// windows in which all clients of a test were active.
///
/// A client whose rows all failed is left out of the window, and where the settings tell how many
/// rows there should be, also one that has under 90 % of them.
void tallyTests(Report& report);

/// Fills in the distributions of each test and of each of its clients, and the stragglers.
void measureTests(Report& report);

/// How the first iteration of a test compares with later ones.
struct FirstIteration {
  double firstMedian = 0, laterMedian = 0;  ///< MiB/s; 0: there are none
};

/// Of each test.
[[nodiscard]] std::vector<FirstIteration> firstIterations(const Report& report);

}  // namespace marrowbench::ctl

#endif
