#ifndef MARROWBENCH_MARROWCTL_TABLE_RUN_SPANS_H
#define MARROWBENCH_MARROWCTL_TABLE_RUN_SPANS_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>

namespace marrowbench::ctl {

/// Rows taken together to spans of time: a gap in which no row was under way ends one.
class RunSpans {
 public:
  /// @param longestGap  seconds that do not end a span yet
  explicit RunSpans(std::int64_t longestGap) : gap(longestGap) {}

  /// A row from `start` to `end`, in any order. @pre start <= end
  void add(std::int64_t start, std::int64_t end);

  [[nodiscard]] std::size_t count() const { return ends.size(); }

  /// Number of the span in which a moment lies, from 0, the oldest. @pre it was in an added row
  [[nodiscard]] std::size_t indexOf(std::int64_t moment) const {
    const auto behind = ends.upper_bound(moment);
    return static_cast<std::size_t>(std::distance(ends.begin(), behind)) - 1;
  }

  /// Where the newest span begins; 0 when there is none.
  [[nodiscard]] std::int64_t newestBegin() const { return ends.empty() ? 0 : ends.rbegin()->first; }

 private:
  std::int64_t gap;
  std::map<std::int64_t, std::int64_t> ends;  // by the beginning
};

}  // namespace marrowbench::ctl

#endif
