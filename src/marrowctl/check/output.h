#ifndef MARROWBENCH_MARROWCTL_CHECK_OUTPUT_H
#define MARROWBENCH_MARROWCTL_CHECK_OUTPUT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/check/finding.h"
#include "marrowctl/plan/plan.h"
#include "marrowctl/plan/totals.h"
#include "marrowctl/support/terminal.h"

/// The answers of check. All are whole texts that end in a line feed.
namespace marrowbench::ctl {

/// For a person: the lines, their paths, the totals, the findings.
[[nodiscard]] std::string checkText(const Plan& plan, const Totals& totals,
                                    const std::vector<Finding>& findings, const TextStyle& style);

/// The totals, and how many findings of each kind there are.
[[nodiscard]] std::string checkSummary(const Totals& totals, const std::vector<Finding>& findings,
                                       const TextStyle& style);

/// A line for each finding, in the form that editors take from compilers. Findings about a file
/// stand at 1:1. Empty without findings.
[[nodiscard]] std::string checkGcc(const std::vector<Finding>& findings);

/// One document, schema marrowctl.check/1: docs/schemas/check.schema.json.
[[nodiscard]] std::string checkJson(const Plan& plan, const Totals& totals,
                                    const std::vector<Finding>& findings);

/// What --explain prints: nothing when the name is no finding's.
[[nodiscard]] std::optional<std::string> explanationOf(std::string_view name,
                                                       const TextStyle& style);

/// "error", "warning" or "note".
[[nodiscard]] std::string_view nameOf(Severity severity);

}  // namespace marrowbench::ctl

#endif
