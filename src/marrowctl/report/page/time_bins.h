#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_TIME_BINS_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_TIME_BINS_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "marrowctl/report/report.h"

namespace marrowbench::ctl {

/// A stretch of time in equal parts.
struct TimeBins {
  double start = 0;  ///< seconds since the epoch
  double width = 1;  ///< seconds
  std::size_t count = 0;

  [[nodiscard]] double startOf(std::size_t bin) const {
    return start + width * static_cast<double>(bin);
  }

  /// Shares an amount out over the bins that [from, to] touches, in proportion to the time in each:
  /// `add(bin, part)`. @pre start <= from < to <= the end of the last bin
  template <class Add>
  void spread(double from, double to, double amount, Add add) const {
    auto bin = static_cast<std::size_t>((from - start) / width);
    for (; bin < count && startOf(bin) < to; ++bin) {
      const double part = std::min(to, startOf(bin + 1)) - std::max(from, startOf(bin));
      if (part > 0) add(bin, amount * part / (to - from));
    }
  }
};

/// Bins over all rows that moved something: the narrowest of 1, 2, 5, 10, 15, 30 s, 1, 2, ... min
/// of which at most so many are needed. Tables tell times to one second. No bins where nothing
/// moved.
[[nodiscard]] TimeBins timeBinsOf(const Report& report, std::size_t most);

/// The bytes that rows moved, by line and bin.
///
/// @param lineOf  of a ResultRow: a number below `lines`
template <class LineOf>
std::vector<std::vector<double>> bytesByBin(const Report& report, const TimeBins& bins,
                                            std::size_t lines, LineOf lineOf) {
  std::vector<std::vector<double>> bytes(lines, std::vector<double>(bins.count));
  RowCursor cursor(report.results, Unpacking::nothing);
  while (cursor.next()) {
    const ResultRow& row = cursor.row();
    if (!row.moved) continue;
    std::vector<double>& line = bytes[lineOf(row)];
    bins.spread(row.exactStart, static_cast<double>(row.end), static_cast<double>(row.bytes),
                [&line](std::size_t bin, double part) { line[bin] += part; });
  }
  return bytes;
}

/// MiB per second of bytes in one bin.
[[nodiscard]] inline double mibPerSecond(double bytes, const TimeBins& bins) {
  return bytes / bins.width / 1048576.0;
}

}  // namespace marrowbench::ctl

#endif
