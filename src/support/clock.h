#ifndef MARROWBENCH_SUPPORT_CLOCK_H
#define MARROWBENCH_SUPPORT_CLOCK_H

#include <cstdint>

/// Wall-clock seconds, the millisecond stopwatch and the millisecond sleep. Seconds are signed
/// 64-bit counts since the epoch.
namespace marrowbench {

/// out = now + seconds.
void secondsFromNow(std::int64_t& out, std::int64_t seconds);

/// out = now when `take` is set, else 0.
void timeNow(std::int64_t& out, bool take);

/// out = in; returns out.
std::int64_t& copyTime(std::int64_t& out, std::int64_t in);

/// True when now is strictly later than a + b seconds.
[[nodiscard]] bool timePassed(std::int64_t a, std::int64_t b);

/// The current time in seconds.
[[nodiscard]] std::int64_t currentSeconds();

/// out = wall-clock milliseconds since the epoch.
void nowMs(std::int64_t& out);

/// Milliseconds since `start`, a reading of nowMs().
///
/// @return the 32-bit difference with the sign bit cleared: never negative, wraps after about
///         24.8 days; a clock that was set back gives a large value.
[[nodiscard]] std::int32_t elapsedMs(std::int64_t start);

/// Sleeps `milliseconds`, in pieces of at most 999 ms; values below 1 return at once.
void sleepMs(std::int32_t milliseconds);

}  // namespace marrowbench

#endif
