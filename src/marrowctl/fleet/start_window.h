#ifndef MARROWBENCH_MARROWCTL_FLEET_START_WINDOW_H
#define MARROWBENCH_MARROWCTL_FLEET_START_WINDOW_H

#include <cstdint>

/// When a settings file is to appear, so that all clients that wait for it start in one minute.
///
/// A client that finds the file at second 45 of a minute, by its own clock, or later starts a
/// minute after those that found it before. So the file has the widest window, 59 seconds, when it
/// appears at second 46: all that see it up to second 44 of the next minute start together.
namespace marrowbench::ctl {

/// How far the clients' clocks are ahead of the share's.
struct ClockSpan {
  std::int64_t slowestMs = 0;
  std::int64_t fastestMs = 0;
};

/// The next moment, by the share's clock, at which the slowest clock shows second 46.
/// All times are milliseconds since the epoch.
[[nodiscard]] std::int64_t bestMoment(std::int64_t shareMs, const ClockSpan& clocks);

/// What comes of a file that appears at a moment.
struct StartWindow {
  std::int64_t startMs = 0;   ///< the minute at which the tests start, by the clients' clocks
  std::int64_t lengthMs = 0;  ///< for so long clients that find the file start in that minute
};

/// @param shareMs  when the file appears, by the share's clock
[[nodiscard]] StartWindow windowFrom(std::int64_t shareMs, const ClockSpan& clocks);

}  // namespace marrowbench::ctl

#endif
