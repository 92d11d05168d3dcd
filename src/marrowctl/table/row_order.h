#ifndef MARROWBENCH_MARROWCTL_TABLE_ROW_ORDER_H
#define MARROWBENCH_MARROWCTL_TABLE_ROW_ORDER_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "marrowctl/table/row_store.h"
#include "marrowctl/table/sites.h"

namespace marrowbench::ctl {

/// In which order rows of tests stand whose paths differ. A client runs all iterations of a line
/// before it goes on with another one; the rows of clients that run together mix.
struct RowOrder {
  std::uint64_t rows = 0;
  std::uint64_t inside = 0;   ///< unfinished lines followed by another one of the same name
  std::uint64_t between = 0;  ///< unfinished lines followed by one of another name

  /// The rows of each name are those of one client.
  [[nodiscard]] bool keepsLinesWhole() const { return inside * 20 <= rows; }
  /// Different names ran at the same time.
  [[nodiscard]] bool mixesNames() const { return between >= 2 && between * 20 > rows; }
};

/// @param families  of each site: sites that differ in their paths alone
/// @param names     of each site, as numbers; kNone: it has none
[[nodiscard]] RowOrder orderOf(const RowStore& store, const std::vector<Site>& sites,
                               const std::vector<std::size_t>& families,
                               const std::vector<std::uint32_t>& names);

}  // namespace marrowbench::ctl

#endif
