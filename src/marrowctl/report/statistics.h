#ifndef MARROWBENCH_MARROWCTL_REPORT_STATISTICS_H
#define MARROWBENCH_MARROWCTL_REPORT_STATISTICS_H

#include <cstdint>
#include <span>
#include <vector>

#include "marrowctl/report/report.h"

namespace marrowbench::ctl {

/// The value below which a share of the others lies, by linear interpolation between order
/// statistics: position (n - 1) x share, counted from 0 (type 7 of Hyndman and Fan, 1996). Changes
/// the order of the values. @pre there are values; 0 <= share <= 1
[[nodiscard]] double quantile(std::span<double> values, double share);

[[nodiscard]] inline double median(std::span<double> values) { return quantile(values, 0.5); }

/// All of it. Changes the order of the values. @pre there are values
[[nodiscard]] Spread spreadOf(std::span<double> values);

/// The median distance from the median, times 1.4826, which makes it the standard deviation of
/// values that are distributed normally. @pre there are values
[[nodiscard]] double scaledMad(std::vector<double> values);

/// Which of the values lie more than three scaled MAD and more than 10 % from their median.
/// @return their indices
[[nodiscard]] std::vector<std::size_t> outliersOf(const std::vector<double>& values);

}  // namespace marrowbench::ctl

#endif
