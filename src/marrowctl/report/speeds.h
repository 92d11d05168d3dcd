#ifndef MARROWBENCH_MARROWCTL_REPORT_SPEEDS_H
#define MARROWBENCH_MARROWCTL_REPORT_SPEEDS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

/// A figure of all rows that moved something, sorted into groups: eight bytes a row, so that only
/// one of these should live at a time.
class GroupedFigures {
 public:
  /// @param group   number of a row's group
  /// @param figure  what is collected of a row
  template <class Group, class Figure>
  GroupedFigures(const ResultSet& set, std::size_t groups, Group group, Figure figure)
      : begins(groups + 1) {
    forEachMoved(set, [this, &group](const ResultRow& row) { ++begins[group(row) + 1]; });
    for (std::size_t i = 1; i < begins.size(); ++i) begins[i] += begins[i - 1];
    figures.resize(begins.back());
    std::vector<std::size_t> next(begins.begin(), begins.end() - 1);
    forEachMoved(set, [this, &group, &figure, &next](const ResultRow& row) {
      figures[next[group(row)]++] = figure(row);
    });
  }

  /// The figures of groups that follow one another; the caller may change their order.
  [[nodiscard]] std::span<double> of(std::size_t group, std::size_t groups = 1) {
    return {figures.data() + begins[group], begins[group + groups] - begins[group]};
  }

 private:
  template <class Visit>
  static void forEachMoved(const ResultSet& set, Visit visit) {
    for (RowCursor rows(set, Unpacking::nothing); rows.next();) {
      if (rows.row().moved) visit(rows.row());
    }
  }

  std::vector<std::size_t> begins;
  std::vector<double> figures;
};

}  // namespace marrowbench::ctl

#endif
