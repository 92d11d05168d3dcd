#ifndef MARROWBENCH_MARROWCTL_REPORT_SPEEDS_H
#define MARROWBENCH_MARROWCTL_REPORT_SPEEDS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

/// The rows of each series that moved something.
struct MovedRows {
  std::uint64_t first = 0;  ///< of the first iteration
  std::uint64_t later = 0;
};

/// A figure of all rows that moved something, eight bytes each, so that only one of these should
/// live at a time. Those of a test stand together, in them those of a client, and in these the
/// first iterations in front.
class GroupedFigures {
 public:
  /// @param counts  of each series
  /// @param figure  what is collected of a row
  template <class Figure>
  GroupedFigures(const ResultSet& set, const std::vector<MovedRows>& counts, Figure figure) {
    arrange(set, counts);
    std::vector<std::uint64_t> nextFirst(counts.size()), nextLater(counts.size());
    for (std::size_t i = 0; i < counts.size(); ++i) {
      nextFirst[i] = begins[i];
      nextLater[i] = begins[i] + counts[i].first;
    }
    for (RowCursor rows(set, Unpacking::nothing); rows.next();) {
      const ResultRow& row = rows.row();
      if (!row.moved) continue;
      auto& next = row.iteration > 0 ? nextLater : nextFirst;
      figures[next[row.series]++] = figure(row);
    }
  }

  /// The caller may change the order of the figures in each.
  [[nodiscard]] std::span<double> ofTest(std::size_t test) { return part(testBegins, test); }
  [[nodiscard]] std::span<double> ofSeries(std::size_t series) {
    return {figures.data() + begins[series], lengths[series]};
  }

 private:
  void arrange(const ResultSet& set, const std::vector<MovedRows>& counts);

  [[nodiscard]] std::span<double> part(const std::vector<std::uint64_t>& limits, std::size_t i) {
    return {figures.data() + limits[i], limits[i + 1] - limits[i]};
  }

  std::vector<std::uint64_t> testBegins;       // and the end of the last one
  std::vector<std::uint64_t> begins, lengths;  // of series
  std::vector<double> figures;
};

}  // namespace marrowbench::ctl

#endif
