#ifndef MARROWBENCH_MARROWCTL_TABLE_NUMBER_PLACES_H
#define MARROWBENCH_MARROWCTL_TABLE_NUMBER_PLACES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "marrowctl/table/row_store.h"

/// Paths of different clients are built alike, but a client called "c07" has a number in it where
/// one called "alpha" has none. So numbers are compared by where they stand, not by their order.
namespace marrowbench::ctl {

/// Where a number stands in the paths of a row.
struct NumberPlace {
  std::size_t path = 0;   ///< 0 the source, 1 the destination
  std::size_t token = 0;  ///< number of the token, from 0
  std::size_t mark = 0;   ///< number of the number in its token
  bool fillsToken = false;
  bool followsUnderscore = false;  ///< and the number in front of it stands right before that
};

/// The places of all numbers of a kind, those of its source first.
[[nodiscard]] std::vector<NumberPlace> placesOf(const RowKind& kind);

/// Kinds of the same parameters whose paths have the same separators.
struct KindFamily {
  std::vector<std::uint32_t> kinds;
  std::int64_t iterations = 0;  ///< the most of its kinds
};

[[nodiscard]] std::vector<KindFamily> familiesOf(const std::vector<RowKind>& kinds);

/// A text for the parameters that tell tests apart: all but the number of iterations.
[[nodiscard]] std::string keyOf(const Parameters& parameters);

}  // namespace marrowbench::ctl

#endif
