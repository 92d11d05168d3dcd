#include "marrowctl/report/statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace marrowbench::ctl {
namespace {

constexpr double kNormal = 1.4826;
constexpr double kFar = 3;
constexpr double kLeastShare = 0.1;

// As quantile(), for several shares, the lowest first: each only sorts what the one before it left.
// @param placed  no value in front of this place is larger than one behind it; moved on
double nextQuantile(std::span<double> values, double share, std::ptrdiff_t& placed) {
  const double position = static_cast<double>(values.size() - 1) * share;
  const auto below = static_cast<std::size_t>(position);
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(below);
  std::nth_element(values.begin() + placed, at, values.end());
  placed = at - values.begin();
  const double part = position - static_cast<double>(below);
  if (part == 0) return *at;
  return *at + part * (*std::min_element(at + 1, values.end()) - *at);
}

}  // namespace

double quantile(std::span<double> values, double share) {
  std::ptrdiff_t placed = 0;
  return nextQuantile(values, share, placed);
}

Spread spreadOf(std::span<double> values) {
  Spread spread;
  spread.count = static_cast<std::int64_t>(values.size());
  std::ptrdiff_t placed = 0;
  spread.p25 = nextQuantile(values, 0.25, placed);
  spread.median = nextQuantile(values, 0.5, placed);
  spread.p75 = nextQuantile(values, 0.75, placed);
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  spread.min = *least;
  spread.max = *most;
  const auto count = static_cast<double>(values.size());
  spread.mean = std::accumulate(values.begin(), values.end(), 0.0) / count;
  if (values.size() < 2 || spread.mean == 0) return spread;
  const double squares =
      std::accumulate(values.begin(), values.end(), 0.0, [&spread](double sum, double value) {
        return sum + (value - spread.mean) * (value - spread.mean);
      });
  spread.cv = std::sqrt(squares / (count - 1)) / spread.mean;
  return spread;
}

double scaledMad(std::vector<double> values) {
  const double middle = median(values);
  for (double& value : values) value = std::abs(value - middle);
  return kNormal * median(values);
}

std::vector<std::size_t> outliersOf(const std::vector<double>& values) {
  if (values.empty()) return {};
  std::vector<double> reordered = values;
  const double middle = median(reordered);
  const double limit = std::max(kFar * scaledMad(values), kLeastShare * middle);
  std::vector<std::size_t> outliers;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::abs(values[i] - middle) > limit) outliers.push_back(i);
  }
  return outliers;
}

}  // namespace marrowbench::ctl
