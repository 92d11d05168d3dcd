#include "marrowctl/report/speeds.h"

#include <algorithm>

namespace marrowbench::ctl {
namespace {

// So many figures of both kinds take 32 MB; each range is a walk over all rows.
constexpr std::uint64_t kRowsOfRange = 2'000'000;

std::uint64_t rowsOf(const MovedRows& count) { return count.first + count.later; }

}  // namespace

std::vector<TestRange> rangesOfTests(const ResultSet& set, const std::vector<MovedRows>& counts) {
  std::vector<std::uint64_t> rows(set.tests.size());
  for (std::size_t i = 0; i < counts.size(); ++i) rows[set.series[i].test] += rowsOf(counts[i]);
  std::vector<TestRange> ranges;
  std::uint64_t inRange = 0;
  for (std::size_t test = 0; test < rows.size(); ++test) {
    if (ranges.empty() || inRange + rows[test] > kRowsOfRange) {
      ranges.push_back({test, test});
      inRange = 0;
    }
    ranges.back().end = test + 1;
    inRange += rows[test];
  }
  return ranges;
}

GroupedFigures::GroupedFigures(const ResultSet& set, const std::vector<MovedRows>& counts,
                               TestRange tests)
    : range(tests) {
  arrange(set, counts);
  fill(set, counts);
}

void GroupedFigures::arrange(const ResultSet& set, const std::vector<MovedRows>& counts) {
  begins.resize(counts.size());
  lengths.resize(counts.size());
  // First the rows of each test, at the place of the one behind it.
  testBegins.assign(range.end - range.begin + 1, 0);
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const std::uint32_t test = set.series[i].test;
    if (holds(test)) testBegins[test - range.begin + 1] += rowsOf(counts[i]);
  }
  for (std::size_t i = 1; i < testBegins.size(); ++i) testBegins[i] += testBegins[i - 1];
  std::vector<std::uint64_t> next = testBegins;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const std::uint32_t test = set.series[i].test;
    if (!holds(test)) continue;
    lengths[i] = rowsOf(counts[i]);
    begins[i] = next[test - range.begin];
    next[test - range.begin] += lengths[i];
  }
  times.resize(testBegins.back());
  speeds.resize(testBegins.back());
}

void GroupedFigures::fill(const ResultSet& set, const std::vector<MovedRows>& counts) {
  std::vector<std::uint64_t> nextFirst = begins, nextLater = begins;
  for (std::size_t i = 0; i < counts.size(); ++i) nextLater[i] += counts[i].first;
  for (RowCursor rows(set, Unpacking::nothing, range); rows.next();) {
    const ResultRow& row = rows.row();
    if (!row.moved) continue;
    auto& next = row.iteration > 0 ? nextLater : nextFirst;
    const std::uint64_t place = next[row.series]++;
    times[place] = static_cast<double>(row.milliseconds);
    speeds[place] = mibPerSecond(row);
  }
}

}  // namespace marrowbench::ctl
