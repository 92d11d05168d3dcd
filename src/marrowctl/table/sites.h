#ifndef MARROWBENCH_MARROWCTL_TABLE_SITES_H
#define MARROWBENCH_MARROWCTL_TABLE_SITES_H

#include <cstdint>
#include <string>
#include <vector>

#include "marrowctl/table/number_roles.h"
#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

/// Rows of one file with the same parameters and the same paths, iteration and date aside. Clients
/// and tests are found out once for each site and not once for each row.
struct Site {
  std::uint32_t file = 0;
  std::uint32_t kind = 0;  ///< of its first row
  /// "MEMORY", or a path with "[iter]" and "[date]" where they go.
  std::string source, dest;
  std::string host;  ///< empty: not known yet
  std::uint64_t rows = 0;
  double busySeconds = 0;  ///< of all its rows together
  double firstStart = 0;   ///< seconds since the epoch
  std::uint32_t lastEnd = 0;
};

/// The sites of all rows, in the order of their first rows. Each row's StoredRow::series becomes
/// the index of its site, and its iteration is set where a path tells it; else it is -1.
[[nodiscard]] std::vector<Site> takeSites(RowStore& store, const NumberRoles& roles);

}  // namespace marrowbench::ctl

#endif
