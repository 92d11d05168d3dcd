#ifndef MARROWBENCH_MARROWCTL_FLEET_IN_TURN_H
#define MARROWBENCH_MARROWCTL_FLEET_IN_TURN_H

#include <algorithm>
#include <cstddef>

namespace marrowbench::ctl {

/// Calls `take` with the next numbers below `size`, all of them or `most`, and goes on behind the
/// last one in the next call. @param next  where that is: 0 at first
template <class Take>
void inTurn(std::size_t size, std::size_t most, std::size_t& next, Take take) {
  const std::size_t count = std::min(size, most);
  for (std::size_t i = 0; i < count; ++i) {
    if (next >= size) next = 0;
    take(next++);
  }
}

}  // namespace marrowbench::ctl

#endif
