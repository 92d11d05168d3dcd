#ifndef MARROWBENCH_MARROWCTL_FLEET_PACE_H
#define MARROWBENCH_MARROWCTL_FLEET_PACE_H

#include <cstdint>

namespace marrowbench::ctl {

/// Something that is done every few seconds.
class Pace {
 public:
  /// @param seconds  from now until it is due for the first time, and from then on
  explicit Pace(std::int64_t seconds);

  /// Whether it is to be done now; counts anew when it is. A clock that was set back makes it due.
  [[nodiscard]] bool isDue();

  void slowDown(std::int64_t seconds) { intervalMs = seconds * 1000; }

 private:
  std::int64_t intervalMs;
  std::int64_t lastMs = 0;
};

/// Pauses between looks at a run: a second, or as much longer as keeps the program below a
/// hundredth of a processor, however many clients there are.
class SparingPace {
 public:
  SparingPace();

  /// How long to pause after what was done since the last call, in milliseconds.
  [[nodiscard]] std::int64_t pauseMs();

 private:
  std::int64_t usedMs;  // of the processor's time up to the last call
};

}  // namespace marrowbench::ctl

#endif
