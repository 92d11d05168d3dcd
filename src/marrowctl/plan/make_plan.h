#ifndef MARROWBENCH_MARROWCTL_PLAN_MAKE_PLAN_H
#define MARROWBENCH_MARROWCTL_PLAN_MAKE_PLAN_H

#include <cstdint>
#include <istream>
#include <map>
#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

struct PlanOptions {
  std::vector<std::string> files;  ///< settings files, folders of them, or "-" for `input`
  std::vector<std::string> hosts;  ///< client names; empty: this machine's
  std::int64_t clients = 0;        ///< 0: as many as there are hosts
  /// Settings files that are to be written, by their path: they are planned as if they were there.
  std::map<std::string, std::string> texts{};
};

/// Reads settings files and follows their chains, by the rules and in the order of the program. A
/// folder stands for its *.bst files in order of name; a file that another one chains to is planned
/// once, in its place.
///
/// @param input  read for "-", whose folder is the current one
Plan makePlan(const PlanOptions& options, std::istream& input);

}  // namespace marrowbench::ctl

#endif
