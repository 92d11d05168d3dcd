#ifndef MARROWBENCH_MARROWCTL_CHECK_TEXT_PARTS_H
#define MARROWBENCH_MARROWCTL_CHECK_TEXT_PARTS_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "marrowctl/check/finding.h"
#include "marrowctl/check/survey.h"
#include "marrowctl/plan/totals.h"
#include "marrowctl/support/terminal.h"

/// The parts of the text for a person.
namespace marrowbench::ctl {

/// A row for each test line of a file, and where the file leads.
///
/// @param moved  Totals::movedByTest from the file's first test on
[[nodiscard]] std::string linesText(const Plan& plan, const PlannedFile& file,
                                    std::span<const std::int64_t> moved, const TextStyle& style);

/// What each line reads and writes in its first and last iteration, and where rows and reports go.
[[nodiscard]] std::string pathsText(const Survey& survey, const PlannedFile& file,
                                    const TextStyle& style);

[[nodiscard]] std::string totalsText(const Totals& totals, const TextStyle& style);

/// As compilers show them. Of many of one kind in a file the first ones.
[[nodiscard]] std::string findingsText(const std::vector<Finding>& findings,
                                       const TextStyle& style);

/// "2 errors, 1 warning.": the last line.
[[nodiscard]] std::string countsText(const std::vector<Finding>& findings, const TextStyle& style);

}  // namespace marrowbench::ctl

#endif
