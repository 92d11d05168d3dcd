#ifndef MARROWBENCH_MARROWCTL_TABLE_CLIENT_ORDER_H
#define MARROWBENCH_MARROWCTL_TABLE_CLIENT_ORDER_H

#include <cstdint>
#include <vector>

#include "marrowctl/table/row_store.h"
#include "marrowctl/table/settings_lines.h"

namespace marrowbench::ctl {

/// The rows of a store in an order in which those of each client stand as it wrote them: tables are
/// read one behind the other, while a client goes from one to another with its tests. Rows of one
/// table keep their order; of those that ended in the same second in several tables the one of the
/// earlier line comes first.
///
/// @param clients  for each site, which is what `series` of a row says, its client
/// @param lines    for each site those that its rows can be of
/// @return numbers of rows; none where the order of the store is such an order
[[nodiscard]] std::vector<std::uint64_t> clientOrder(const RowStore& store,
                                                     const std::vector<std::uint32_t>& clients,
                                                     const std::vector<LineNumbers>& lines);

}  // namespace marrowbench::ctl

#endif
