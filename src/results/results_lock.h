#ifndef MARROWBENCH_RESULTS_RESULTS_LOCK_H
#define MARROWBENCH_RESULTS_RESULTS_LOCK_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "results/exclusive_file.h"
#include "results/sighting.h"
#include "support/fixed_string.h"
#include "support/signal_hold.h"

namespace marrowbench {

/// The file that is the lock of a results table, for tables whose path is shorter than 249
/// characters: longer ones leave no name for it.
[[nodiscard]] FixedString lockFileOf(const WideFixedString& resultsPath);

/// Makes the clients that append to one results file take turns, across machines, by a lock file
/// beside it: created exclusively, kept open while the row is appended, then deleted.
///
/// While the lock is held SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGTSTP wait: a client that ends or
/// is stopped leaves no lock behind.
///
/// The lock file is the results path with "_lock.txt" appended, cut at 250 characters. A results
/// path of 249 characters would be its own lock: it must not be used. With 250 and more the lock
/// file bears the first 249 of them and is never taken over.
class ResultsLock {
 public:
  explicit ResultsLock(const WideFixedString& resultsPath);
  ResultsLock(const ResultsLock&) = delete;
  ResultsLock& operator=(const ResultsLock&) = delete;
  ~ResultsLock();

  /// Tries to take the lock, which this object must not hold: looks up to timeoutMs / 250 times, at
  /// least once, 250 ms apart, whether it is free. A lock file that has stood there since the first
  /// look and is more than 10,800 s old is then taken over, by one client at a time.
  ///
  /// Prints nothing. It always ends: when a name can't be created although it seems to be free, the
  /// client sleeps between the attempts and gives up after as many as it would have looked.
  ///
  /// @param timeoutMs  milliseconds to wait; read only
  /// @param ownerText  named in the lock file's note
  /// @param waitedMs   optional: milliseconds waited, negated when the lock file could not be
  ///                   created for a reason other than another client's lock
  /// @param probeOnly  true: only finds out whether the lock could be taken, creates nothing
  /// @return true when the lock is held (or could be). When it is not, errno tells why: 0 when
  ///         another client held it all the time, else why the lock file could not be created.
  [[nodiscard]] bool acquire(int& timeoutMs, const WideFixedString& ownerText, int* waitedMs,
                             bool probeOnly);

  /// True when the lock, which this object holds, is certainly another client's by now: this one
  /// stood still for so long that it was taken over.
  [[nodiscard]] bool isLost() const { return file.isReplaced(); }

  /// Closes and deletes the lock file, but never another client's; one that can't be deleted is
  /// renamed to its path + ".none", so that it blocks nobody. Silent; nothing happens when the lock
  /// is not held.
  void release() noexcept;

 private:
  // The lock file, the guard of its takeover, and the guard of that one's.
  static constexpr std::size_t kLevels = 3;

  // One acquire(): how often it may look, how often it has, and what it saw first.
  struct Wait {
    int tries = 0;
    int count = 0;
    std::array<std::optional<Sighting>, kLevels> seen;
  };

  [[nodiscard]] bool create();
  [[nodiscard]] bool waitUntilFree(Wait& wait) const;
  [[nodiscard]] bool removeIfStale(const Wait& wait) const;
  void removeAbandoned(const Wait& wait, std::size_t level) const;
  [[nodiscard]] FixedString levelName(std::size_t level) const;
  void writeNote(const WideFixedString& ownerText);

  WideFixedString name;
  bool mayBeAged;  // false: cut so far that the name to be aged is a table's
  ExclusiveFile file;
  std::optional<SignalHold> interruptions;  // while the lock is held
};

/// Renames a file.
///
/// @param overwrite  true: an existing `to` is deleted first; false: an existing `to` counts as
/// done
/// @return false when `to` can't be deleted, `from` is no file, or the rename fails
bool moveFile(const FixedString& from, const FixedString& to, bool overwrite);

}  // namespace marrowbench

#endif
