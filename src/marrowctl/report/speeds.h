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

/// Divides all tests of a set into ranges whose figures together take little memory beside that of
/// the rows. A range holds one test at least, however many rows that has.
[[nodiscard]] std::vector<TestRange> rangesOfTests(const ResultSet& set,
                                                   const std::vector<MovedRows>& counts);

/// The times and speeds of the rows that moved something, of a range of tests. Those of a test
/// stand together, in them those of a client, and in these the first iterations in front.
class GroupedFigures {
 public:
  /// @param counts  of each series
  GroupedFigures(const ResultSet& set, const std::vector<MovedRows>& counts, TestRange range);

  /// In milliseconds. The caller may change their order within each test.
  [[nodiscard]] std::span<double> timesOf(std::size_t test) { return part(times, test); }

  /// In MiB/s. The caller may change their order in each.
  [[nodiscard]] std::span<double> speedsOf(std::size_t test) { return part(speeds, test); }
  [[nodiscard]] std::span<double> speedsOfSeries(std::size_t series) {
    return {speeds.data() + begins[series], lengths[series]};
  }

 private:
  void arrange(const ResultSet& set, const std::vector<MovedRows>& counts);
  void fill(const ResultSet& set, const std::vector<MovedRows>& counts);

  [[nodiscard]] bool holds(std::uint32_t test) const {
    return test >= range.begin && test < range.end;
  }
  [[nodiscard]] std::span<double> part(std::vector<double>& figures, std::size_t test) const {
    const std::size_t i = test - range.begin;
    return {figures.data() + testBegins[i], testBegins[i + 1] - testBegins[i]};
  }

  const TestRange range;
  std::vector<std::uint64_t> testBegins;       // of the range, and the end of its last one
  std::vector<std::uint64_t> begins, lengths;  // of series
  std::vector<double> times, speeds;
};

}  // namespace marrowbench::ctl

#endif
