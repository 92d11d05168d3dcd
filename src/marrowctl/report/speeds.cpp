#include "marrowctl/report/speeds.h"

#include <algorithm>
#include <numeric>

namespace marrowbench::ctl {

void GroupedFigures::arrange(const ResultSet& set, const std::vector<MovedRows>& counts) {
  std::vector<std::uint32_t> order(counts.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [&set](std::uint32_t a, std::uint32_t b) {
    return set.series[a].test < set.series[b].test;
  });
  testBegins.assign(set.tests.size() + 1, 0);
  begins.resize(counts.size());
  lengths.resize(counts.size());
  std::uint64_t next = 0;
  for (const std::uint32_t series : order) {
    begins[series] = next;
    lengths[series] = counts[series].first + counts[series].later;
    next += lengths[series];
    testBegins[set.series[series].test + 1] = next;
  }
  // Tests without a series are empty.
  for (std::size_t i = 1; i < testBegins.size(); ++i)
    testBegins[i] = std::max(testBegins[i], testBegins[i - 1]);
  figures.resize(next);
}

}  // namespace marrowbench::ctl
