#ifndef MARROWBENCH_RESULTS_RESULTS_LOCK_H
#define MARROWBENCH_RESULTS_RESULTS_LOCK_H

#include <cstdint>
#include <cstdio>
#include <optional>

#include "support/fixed_string.h"
#include "support/signal_hold.h"

namespace marrowbench {

/// Makes the clients that append to one results file take turns, across machines, by a lock file
/// beside it: created exclusively, kept open while the row is appended, then deleted.
///
/// While the lock is held SIGINT, SIGTERM and SIGHUP wait: a client that ends leaves no lock
/// behind.
///
/// The lock file is the results path with "_lock.txt" appended, cut at 250 characters.
class ResultsLock {
 public:
  explicit ResultsLock(const WideFixedString& resultsPath);
  ResultsLock(const ResultsLock&) = delete;
  ResultsLock& operator=(const ResultsLock&) = delete;
  ~ResultsLock();

  /// Tries to take the lock, which this object must not hold: looks up to timeoutMs / 250 times, at
  /// least once, 250 ms apart, whether it is free. A lock file of more than 10,800 s is then taken
  /// over.
  ///
  /// Prints nothing. It always ends: when a name can't be created although it seems to be free, the
  /// client sleeps between the attempts and gives up after as many as it would have looked.
  ///
  /// @param timeoutMs  milliseconds to wait; read only
  /// @param ownerText  named in the lock file's note
  /// @param waitedMs   optional: milliseconds waited, negated when the lock file could not be
  ///                   created for a reason other than another client's lock
  /// @param probeOnly  true: only finds out whether the lock could be taken, creates nothing
  /// @return true when the lock is held (or could be)
  [[nodiscard]] bool acquire(int& timeoutMs, const WideFixedString& ownerText, int* waitedMs,
                             bool probeOnly);

  /// Closes and deletes the lock file; one that can't be deleted is renamed to its path + ".none",
  /// so that it blocks nobody. Silent; nothing happens when the lock is not held.
  void release() noexcept;

 private:
  [[nodiscard]] bool create();
  [[nodiscard]] bool waitUntilFree(int tries, int& count) const;
  [[nodiscard]] bool removeIfStale() const;
  void writeNote(const WideFixedString& ownerText) const;

  WideFixedString name;
  std::FILE* file = nullptr;
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
