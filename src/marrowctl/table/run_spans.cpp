#include "marrowctl/table/run_spans.h"

#include <algorithm>

namespace marrowbench::ctl {

void RunSpans::add(std::int64_t start, std::int64_t end) {
  // Nearly always the row belongs to the newest span.
  if (!ends.empty()) {
    const auto newest = std::prev(ends.end());
    if (start >= newest->first && start - gap <= newest->second) {
      newest->second = std::max(newest->second, end);
      return;
    }
  }
  auto behind = ends.upper_bound(start);
  if (behind != ends.begin()) {
    const auto before = std::prev(behind);
    if (start - gap <= before->second) {
      start = before->first;
      end = std::max(end, before->second);
      ends.erase(before);
    }
  }
  while (behind != ends.end() && behind->first - gap <= end) {
    end = std::max(end, behind->second);
    behind = ends.erase(behind);
  }
  ends.emplace(start, end);
}

}  // namespace marrowbench::ctl
