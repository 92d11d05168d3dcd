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
  std::int64_t lastMs;
};

}  // namespace marrowbench::ctl

#endif
