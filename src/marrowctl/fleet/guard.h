#ifndef MARROWBENCH_MARROWCTL_FLEET_GUARD_H
#define MARROWBENCH_MARROWCTL_FLEET_GUARD_H

#include <sys/types.h>

namespace marrowbench::ctl {

/// A small process that ends another one, by SIGTERM, when this one is gone without having said
/// that it goes: killed, out of memory. Else a client that nobody counts any more would start with
/// the others.
class Guard {
 public:
  Guard() = default;
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  /// The guarded process has ended, or is no longer to be guarded.
  ~Guard();

  /// Starts guarding, once. @param guarded  a process, or a whole group of them: its number below 0
  /// @return errno of what failed
  [[nodiscard]] int start(pid_t guarded);

 private:
  pid_t process = 0;
  int pipeEnd = -1;  // its closing, without a byte before it, tells that this process is gone
};

}  // namespace marrowbench::ctl

#endif
