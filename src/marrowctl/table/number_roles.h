#ifndef MARROWBENCH_MARROWCTL_TABLE_NUMBER_ROLES_H
#define MARROWBENCH_MARROWCTL_TABLE_NUMBER_ROLES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/table/row_store.h"

namespace marrowbench::ctl {

/// What a number in a path is.
enum class NumberRole : std::uint8_t {
  text,       ///< part of the path's name
  iteration,  ///< it counts up from 0, row by row
  date,       ///< one of the two numbers of a "[date]", as in "1120_23210"
};

/// For each kind of a store the roles of the numbers in its source and its destination.
using NumberRoles = std::vector<std::vector<NumberRole>>;

/// For each kind of a store: which numbers of its source and destination are known to be text.
using KnownTexts = std::vector<std::vector<bool>>;

/// Finds them out. Kinds whose paths are built alike have the iteration at the same places. Counts
/// as iteration what begins at 0, stays below the number of iterations of the test and rises from
/// row to row where all other numbers are the same, or goes up to that number.
///
/// @param texts  numbers that are no iteration; empty: nothing is known
[[nodiscard]] NumberRoles rolesOf(const RowStore& store, const KnownTexts& texts = {});

/// Where tokens of a path end.
inline constexpr std::string_view kTokenEnds = "/_.";

[[nodiscard]] inline bool endsToken(char c) {
  return std::find(kTokenEnds.begin(), kTokenEnds.end(), c) != kTokenEnds.end();
}

/// The separators between the tokens of a path: "//_." for "/data/c01_7.bin".
[[nodiscard]] std::string skeletonOf(std::string_view path);

}  // namespace marrowbench::ctl

#endif
