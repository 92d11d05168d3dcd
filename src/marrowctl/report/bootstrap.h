#ifndef MARROWBENCH_MARROWCTL_REPORT_BOOTSTRAP_H
#define MARROWBENCH_MARROWCTL_REPORT_BOOTSTRAP_H

#include <cstdint>
#include <vector>

namespace marrowbench::ctl {

/// The speed of a row, and which client's it is.
struct ClientSpeed {
  double speed = 0;
  std::uint32_t client = 0;  ///< from 0
};

struct Interval {
  double low = 0, high = 0;
};

/// Rows of so many clients and more are drawn client by client: rows of one client are alike, and
/// taken one by one they would make the interval too narrow.
inline constexpr std::uint32_t kClientsToDraw = 5;

/// The 95 % interval of the ratio of two medians, `after` by `before`, from 2,000 draws with
/// replacement (percentile bootstrap; Efron and Tibshirani, 1993). The same for the same rows,
/// everywhere. @pre both have rows, and no speed is 0 or below
[[nodiscard]] Interval ratioInterval(std::vector<ClientSpeed> before,
                                     std::vector<ClientSpeed> after);

}  // namespace marrowbench::ctl

#endif
