#ifndef MARROWBENCH_MARROWCTL_FLEET_STOPWATCH_H
#define MARROWBENCH_MARROWCTL_FLEET_STOPWATCH_H

#include <chrono>

namespace marrowbench::ctl {

/// Time that has passed since it was made; a clock that is set does not change it.
class Stopwatch {
 public:
  [[nodiscard]] double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }

 private:
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

}  // namespace marrowbench::ctl

#endif
