#include "marrowctl/report/page/time_bins.h"

#include <array>
#include <cmath>

namespace marrowbench::ctl {
namespace {

constexpr std::array<double, 16> kWidths = {1,   2,   5,   10,   15,   30,   60,    120,
                                            300, 600, 900, 1800, 3600, 7200, 14400, 43200};
constexpr double kDay = 86400;

double widthFor(double seconds, std::size_t most) {
  for (const double width : kWidths) {
    if (seconds <= width * static_cast<double>(most)) return width;
  }
  return kDay * std::ceil(seconds / kDay / static_cast<double>(most));
}

}  // namespace

TimeBins timeBinsOf(const Report& report, std::size_t most) {
  bool isFirst = true;
  double start = 0, end = 0;
  RowCursor cursor(report.results, Unpacking::nothing);
  while (cursor.next()) {
    const ResultRow& row = cursor.row();
    if (!row.moved) continue;
    start = isFirst ? row.exactStart : std::min(start, row.exactStart);
    end = isFirst ? static_cast<double>(row.end) : std::max(end, static_cast<double>(row.end));
    isFirst = false;
  }
  if (isFirst) return {};
  start = std::floor(start);
  // One bin less than there may be: the first begins at a multiple of the width.
  const double width = widthFor(end - start, most - 1);
  const double first = std::floor(start / width) * width;
  return {first, width, static_cast<std::size_t>(std::floor((end - first) / width)) + 1};
}

}  // namespace marrowbench::ctl
