#ifndef MARROWBENCH_MARROWCTL_REPORT_COMPARE_H
#define MARROWBENCH_MARROWCTL_REPORT_COMPARE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/support/terminal.h"
#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

enum class Difference { slower, faster, same, cannotTell };

/// A test in one of two runs.
struct ComparedSide {
  std::int64_t rows = 0;     ///< that moved something
  std::int64_t clients = 0;  ///< with such rows
  std::optional<double> medianMibPerSecond;
};

struct ComparedTest {
  std::string name;
  ComparedSide before, after;
  std::optional<double> ratio;      ///< of the medians: above 1 the new one is faster
  std::optional<double> low, high;  ///< its 95 % interval; nothing with fewer than 5 rows a side
  Difference difference = Difference::cannotTell;
};

struct Comparison {
  std::vector<ComparedTest> tests;  ///< worst first; those without a ratio at the end
  std::vector<std::string> onlyOld, onlyNew;
};

/// Compares the tests that two sets share: the same settings line, else the same name, else the
/// same parameters and names of files.
[[nodiscard]] Comparison compare(const ResultSet& before, const ResultSet& after);

/// "slower", "faster", "the same" or "cannot tell".
[[nodiscard]] std::string_view nameOf(Difference difference);

/// Tests with this verdict.
[[nodiscard]] std::int64_t countOf(const Comparison& comparison, Difference difference);

/// The verdict in a sentence: "3 tests in both: 1 slower, 2 the same."
[[nodiscard]] std::string summaryOf(const Comparison& comparison);

/// Tests with too few rows on a side, fewer than 5 with a speed, to tell any difference.
[[nodiscard]] std::int64_t countOfTooFewRows(const Comparison& comparison);

/// Tests whose median is lower by more than so many percent, while their rows scatter too much to
/// tell a difference.
[[nodiscard]] std::int64_t countOfTooScattered(const Comparison& comparison, double percent);

/// True when a test is slower by more than so many percent.
[[nodiscard]] bool hasLoss(const Comparison& comparison, double percent);

[[nodiscard]] std::string compareText(const Comparison& comparison, const TextStyle& style);

/// By docs/schemas/compare.schema.json.
[[nodiscard]] std::string compareJson(const Comparison& comparison);

}  // namespace marrowbench::ctl

#endif
