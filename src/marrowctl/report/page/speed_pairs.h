#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_SPEED_PAIRS_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_SPEED_PAIRS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// One of the two speeds that a test is shown with.
struct PairedSpeed {
  std::string_view field;  ///< of the chart's table, MiB/s
  std::string_view label;  ///< in the legend
  std::string_view colour;
};

/// A drawing with a line for each row of its table: two speeds of the test in its field "test",
/// joined so that their distance is seen.
[[nodiscard]] std::string speedPairsDrawing(const PairedSpeed& one, const PairedSpeed& other,
                                            std::size_t rows);

}  // namespace marrowbench::ctl

#endif
