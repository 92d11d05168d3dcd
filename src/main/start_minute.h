#ifndef MARROWBENCH_MAIN_START_MINUTE_H
#define MARROWBENCH_MAIN_START_MINUTE_H

#include <cstdint>

namespace marrowbench {

/// The minute in which clients that found the settings file at `foundAt` (seconds since the epoch)
/// start: the next full one, or the one after that when it is found at second 45 or later. Minutes
/// since the epoch.
[[nodiscard]] std::int64_t startMinuteFor(std::int64_t foundAt);

/// Seconds to print in the wait message for clients that start at `startMinute`.
///
/// @param startMinute  minutes since the epoch at which the tests begin
/// @param now          current time, seconds since the epoch
/// @return 60 * (startMinute - now / 60) + now % 60. The seconds already gone are added, not
///         subtracted, so that the number is the one that users of the program know.
[[nodiscard]] std::int32_t shownWaitSeconds(std::int64_t startMinute, std::int64_t now);

/// Returns 2 to 4 seconds after the minute has begun.
void waitForMinute(std::int64_t startMinute);

}  // namespace marrowbench

#endif
