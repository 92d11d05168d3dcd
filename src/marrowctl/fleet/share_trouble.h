#ifndef MARROWBENCH_MARROWCTL_FLEET_SHARE_TROUBLE_H
#define MARROWBENCH_MARROWCTL_FLEET_SHARE_TROUBLE_H

#include <cstdint>
#include <optional>

namespace marrowbench::ctl {

/// A share that can't be read for a while, as when its server restarts or another one takes over,
/// is told from one that can't be read at all.
class ShareTrouble {
 public:
  /// Takes note of what reading it came to.
  ///
  /// @param code  errno of what failed; 0: it was read
  /// @return true when it is time to give up: reading has failed for a minute, or there was nothing
  ///         to read from the beginning, or no right to
  [[nodiscard]] bool isLasting(int code);

 private:
  bool wasRead = false;
  std::optional<std::int64_t> sinceMs;  // of the first failure in a row
};

}  // namespace marrowbench::ctl

#endif
