#ifndef MARROWBENCH_MARROWCTL_FLEET_LEFTOVERS_H
#define MARROWBENCH_MARROWCTL_FLEET_LEFTOVERS_H

#include <string>
#include <vector>

#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// What an earlier run left where a new one will write: done markers, by which it would seem to
/// have ended, tables, to which rows would be added, and locks, for which clients would wait.
struct Leftovers {
  std::vector<std::string> markers, tables, locks;  ///< paths
  [[nodiscard]] bool empty() const { return markers.empty() && tables.empty() && locks.empty(); }
};

/// Looks for them on behalf of the plan's hosts; every folder is read once.
[[nodiscard]] Leftovers findLeftovers(const Plan& plan);

/// The lock of a table.
[[nodiscard]] std::string lockOf(const std::string& table);

/// The tables of the plan's hosts, each once, in the order in which they are written to.
[[nodiscard]] std::vector<std::string> tablesOf(const Plan& plan);

}  // namespace marrowbench::ctl

#endif
