#include "marrowctl/fleet/unlock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "marrowctl/fleet/open_file.h"
#include "marrowctl/fleet/share_clock.h"
#include "results/exclusive_file.h"
#include "results/results_lock.h"
#include "results/sighting.h"
#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kNoLockLength = 249;
constexpr std::string_view kLockEnding = "_lock.txt";
// The first of the guards under which a client takes a lock over.
constexpr std::string_view kGuardEnding = ".take";
constexpr std::int64_t kMsPerSecond = 1000;

std::string folderOf(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

FixedString lockPathOf(const std::string& table) {
  WideFixedString wide;
  wide.assignBytes(table);
  return lockFileOf(wide);
}

std::string problemOfTable(const std::string& table) {
  if (table.ends_with(kLockEnding))
    return table + ": name the table, not its lock: without " + std::string(kLockEnding);
  if (table.size() >= kNoLockLength)
    return table + ": a path of 249 characters and more leaves no name for a lock";
  struct stat status {};
  const std::string folder = folderOf(table);
  if (stat(folder.c_str(), &status) != 0) return folder + ": " + std::strerror(errno);
  return {};
}

// The lock, and when it was written: its time and the share's clock, to whole seconds.
struct Look {
  std::optional<Sighting> seen;
  std::int64_t shareSeconds = 0;
};

std::int64_t ageOf(const Look& look, const Sighting& file) {
  return look.shareSeconds - file.modified;
}

void readNote(FoundLock& lock) {
  const OpenFile file(lock.path, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (!file.isOpen() || fstat(file.descriptor(), &status) != 0) return;
  lock.bytes = status.st_size;
  if (S_ISREG(status.st_mode)) (void)file.read(lock.note);
}

// A guard that a client has left behind, in the moment in which it took the lock over, goes first.
bool takeGuard(const FixedString& path, const Look& look, std::int64_t ageSeconds,
               ExclusiveFile& guard) {
  if (guard.create(path)) return true;
  const std::optional<Sighting> other = seeByOpening(path);
  if (!other || ageOf(look, *other) <= ageSeconds) return false;
  return unlink(path.c_str()) == 0 && guard.create(path);
}

// Between the question for its age and its removal a client may have taken it over, and another one
// may hold it by now: so under the guard that those clients take, and only the very same file.
void removeLock(const FixedString& path, const Look& look, std::int64_t ageSeconds,
                UnlockOutcome& outcome) {
  const SignalHold hold;
  FixedString guardPath = path;
  guardPath.append(kGuardEnding);
  ExclusiveFile guard;
  if (!takeGuard(guardPath, look, ageSeconds, guard)) {
    outcome.result = UnlockResult::busy;
    return;
  }
  const std::optional<Sighting> now = seeByOpening(path);
  if (!now || *now != *look.seen) {
    outcome.result = now ? UnlockResult::replaced : UnlockResult::noLock;
    return;
  }
  if (unlink(path.c_str()) == 0) {
    outcome.result = UnlockResult::removed;
  } else {
    outcome.problem = outcome.lock.path + ": " + std::strerror(errno);
  }
}

}  // namespace

UnlockOutcome unlockTable(const UnlockOptions& options) {
  UnlockOutcome outcome;
  outcome.problem = problemOfTable(options.table);
  if (!outcome.problem.empty()) return outcome;
  const FixedString path = lockPathOf(options.table);
  FoundLock& lock = outcome.lock;
  lock.path = path.view();
  Look look;
  look.seen = seeByOpening(path);
  if (!look.seen) {
    if (errno != ENOENT) outcome.problem = lock.path + ": " + std::strerror(errno);
    return outcome;
  }
  readNote(lock);
  ClockReading clock;
  if (const int code = readShareClock(folderOf(options.table), clock); code != 0) {
    outcome.problem = folderOf(options.table) + ": " + std::strerror(code) +
                      ": the share's clock is read from a file made there";
    return outcome;
  }
  look.shareSeconds = clock.shareMs / kMsPerSecond;
  lock.ageSeconds = ageOf(look, *look.seen);
  outcome.result = UnlockResult::shown;
  if (!options.isConfirmed || !options.ageSeconds) return outcome;
  outcome.result = UnlockResult::tooYoung;
  if (lock.ageSeconds > *options.ageSeconds) removeLock(path, look, *options.ageSeconds, outcome);
  return outcome;
}

}  // namespace marrowbench::ctl
