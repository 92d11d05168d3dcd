#ifndef MARROWBENCH_MARROWCTL_FLEET_UNLOCK_H
#define MARROWBENCH_MARROWCTL_FLEET_UNLOCK_H

#include <cstdint>
#include <optional>
#include <string>

namespace marrowbench::ctl {

struct UnlockOptions {
  std::string table;                       ///< the results table, not its lock
  std::optional<std::int64_t> ageSeconds;  ///< a lock must be older to be removed
  bool isConfirmed = false;                ///< false: it is only shown
};

enum class UnlockResult {
  noLock,    ///< none is there
  shown,     ///< it stays: nobody has asked for more
  tooYoung,  ///< it stays: it is not older than asked
  busy,      ///< it stays: a client that takes it over is at it this moment
  replaced,  ///< it has gone, and another one is there
  removed,
};

/// A lock as it was found.
struct FoundLock {
  std::string path;
  std::int64_t ageSeconds = 0;  ///< by the share's clock; below 0: it is from the future
  std::int64_t bytes = 0;
  std::string note;  ///< what its owner has written into it
};

struct UnlockOutcome {
  UnlockResult result = UnlockResult::noLock;
  FoundLock lock;       ///< its path also where none is there
  std::string problem;  ///< why it could not be done, with the path in front; empty: it could
};

/// Looks at the lock of a table and, if that is asked for, removes it when it is old enough. Its
/// age is told by the share's clock. A lock that a client has taken meanwhile stays.
[[nodiscard]] UnlockOutcome unlockTable(const UnlockOptions& options);

}  // namespace marrowbench::ctl

#endif
