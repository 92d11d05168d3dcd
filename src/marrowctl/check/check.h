#ifndef MARROWBENCH_MARROWCTL_CHECK_CHECK_H
#define MARROWBENCH_MARROWCTL_CHECK_CHECK_H

#include <vector>

#include "marrowctl/check/finding.h"
#include "marrowctl/plan/plan.h"
#include "marrowctl/plan/totals.h"

namespace marrowbench::ctl {

/// What a file's "# marrowctl: allow" comments may silence.
enum class Allowance { all, allButErrors };

/// Everything there is to say about a plan, in order of file, line and column. What a file's
/// "# marrowctl: allow" comments name is left out.
///
/// @param totals  totalsOf() the plan
[[nodiscard]] std::vector<Finding> check(const Plan& plan, const Totals& totals,
                                         Allowance allowance = Allowance::all);
/// The same for those who need no totals themselves.
[[nodiscard]] std::vector<Finding> check(const Plan& plan);

/// All kinds of findings, in the order of the manual.
[[nodiscard]] const std::vector<FindingKind>& findingKinds();

/// 2 with an error, 1 with a warning under `strict`, else 0.
[[nodiscard]] int exitStatusOf(const std::vector<Finding>& findings, bool strict);

}  // namespace marrowbench::ctl

#endif
