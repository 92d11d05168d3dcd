#ifndef MARROWBENCH_MARROWCTL_RUN_START_WAIT_H
#define MARROWBENCH_MARROWCTL_RUN_START_WAIT_H

#include <cstdint>

namespace marrowbench::ctl {

/// When the minute begins for which the program waits, seconds since the epoch. The number that it
/// shows does not tell that: the seconds that have gone of the running minute are added to it.
///
/// @param shown  the number that the program shows
/// @param now    seconds since the epoch, less than a minute after it was printed
[[nodiscard]] std::int64_t startTimeFrom(std::int64_t shown, std::int64_t now);

}  // namespace marrowbench::ctl

#endif
