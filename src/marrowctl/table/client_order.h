#ifndef MARROWBENCH_MARROWCTL_TABLE_CLIENT_ORDER_H
#define MARROWBENCH_MARROWCTL_TABLE_CLIENT_ORDER_H

#include <cstdint>
#include <vector>

#include "marrowctl/table/result_set.h"
#include "marrowctl/table/settings_lines.h"
#include "marrowctl/table/sites.h"

namespace marrowbench::ctl {

/// The rows of a set in an order in which those of each client stand as it wrote them: tables are
/// read one behind the other, while a client goes from one to another with its tests. Rows of one
/// table keep their order; those of several tables come in the order of their ends and, where these
/// are the same second, of the settings. Where a client's clock was set, or two programs ran at the
/// same time, the order of the settings counts alone, if the client has fewer runs by it.
///
/// @param set      with its tests; `series` of a row is its site
/// @param clients  for each site its client
/// @param lines    for each site those that its rows can be of
/// @return numbers of rows; none where the order of the set is such an order
[[nodiscard]] std::vector<std::uint64_t> clientOrder(const ResultSet& set,
                                                     const std::vector<Site>& sites,
                                                     const std::vector<std::uint32_t>& clients,
                                                     const std::vector<LineNumbers>& lines);

}  // namespace marrowbench::ctl

#endif
