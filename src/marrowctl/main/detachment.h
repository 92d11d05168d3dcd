#ifndef MARROWBENCH_MARROWCTL_MAIN_DETACHMENT_H
#define MARROWBENCH_MARROWCTL_MAIN_DETACHMENT_H

#include <sys/types.h>

#include <optional>

#include "marrowctl/main/outcome.h"

namespace marrowbench::ctl {

/// Lets the process go on behind the back of the shell that started it, which gets its prompt back
/// when the process says so.
class Detachment {
 public:
  Detachment() = default;
  Detachment(const Detachment&) = delete;
  Detachment& operator=(const Detachment&) = delete;
  ~Detachment();

  /// Leaves the shell's session, in a new process. There nothing is returned; the old process waits
  /// for goOnAlone() or for the end of the new one, passes on signals meanwhile, and has nothing to
  /// do any more but to hand the outcome on.
  [[nodiscard]] std::optional<Outcome> leave();

  /// Called in the new process: the old one may end. From here on what is printed goes nowhere.
  void goOnAlone();

 private:
  int toOldProcess = -1;
};

}  // namespace marrowbench::ctl

#endif
