#ifndef MARROWBENCH_MARROWCTL_FLEET_TABLE_PATTERNS_H
#define MARROWBENCH_MARROWCTL_FLEET_TABLE_PATTERNS_H

#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// What names all tables of a plan, as "marrowctl report" takes it: a table that all clients share
/// by its path, those of which each client, iteration or moment has one by a pattern with "*". Each
/// once, in the order in which they are written to.
[[nodiscard]] std::vector<std::string> tablePatterns(const Plan& plan);

}  // namespace marrowbench::ctl

#endif
