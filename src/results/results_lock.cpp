#include "results/results_lock.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "support/clock.h"
#include "support/file_status.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

constexpr std::int32_t kPauseMs = 250;

// The two kinds of call take copies of different length. It matters only for a name of 250
// characters: the lock file then bears one character less than the name that is aged and renamed.
FixedString createName(const WideFixedString& name) { return narrowedText<249>(name).view(); }
FixedString ageName(const WideFixedString& name) { return narrowedText<499>(name).view(); }

WideFixedString lockName(const WideFixedString& resultsPath) {
  WideFixedString name = resultsPath;
  name.append(u"_lock.txt");
  return name;
}

bool pathExists(const FixedString& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

// Asked once: between two questions a lock may go.
bool folderStandsAt(const FixedString& path) { return !see(path) && errno == EISDIR; }

void setWaited(int* waitedMs, int value) {
  if (waitedMs != nullptr) *waitedMs = value;
}

}  // namespace

FixedString lockFileOf(const WideFixedString& resultsPath) {
  return createName(lockName(resultsPath));
}

ResultsLock::ResultsLock(const WideFixedString& resultsPath)
    : name(lockName(resultsPath)), mayBeAged(resultsPath.length() < WideFixedString::capacity()) {}

ResultsLock::~ResultsLock() { release(); }

bool ResultsLock::acquire(int& timeoutMs, const WideFixedString& ownerText, int* waitedMs,
                          bool probeOnly) {
  setWaited(waitedMs, 1);
  Wait wait;
  wait.tries = std::max(timeoutMs / kPauseMs, 1);
  int countAtLastRace = -1;
  int vainRaces = 0;
  for (;;) {
    const bool isFree = waitUntilFree(wait);
    setWaited(waitedMs, wait.count * kPauseMs);
    if (!isFree && !removeIfStale(wait)) {
      errno = 0;
      return false;
    }
    if (probeOnly) return true;

    if (create()) break;
    // EEXIST is another client that came first, and worth another look, unless a folder bears the
    // name. Without a sleep since the last EEXIST something else is wrong: the name is cut, it is a
    // dangling link, or the share shows old entries.
    const int code = errno;
    const bool lostRace = code == EEXIST && !folderStandsAt(createName(name));
    const bool inVain = lostRace && wait.count == countAtLastRace;
    if (!lostRace || (inVain && ++vainRaces > wait.tries)) {
      setWaited(waitedMs, -wait.count * kPauseMs);
      errno = code;
      return false;
    }
    if (inVain) sleepMs(kPauseMs);
    countAtLastRace = wait.count;
  }
  writeNote(ownerText);
  return true;
}

// Signals wait from before the file exists until it is deleted: nobody else would delete it.
bool ResultsLock::create() {
  interruptions.emplace();
  if (file.create(createName(name))) return true;
  const int code = errno;
  interruptions.reset();
  errno = code;
  return false;
}

bool ResultsLock::waitUntilFree(Wait& wait) const {
  const FixedString path = createName(name);
  for (; wait.count < wait.tries; ++wait.count) {
    if (!pathExists(path)) return true;
    if (wait.count == 0) {
      for (std::size_t level = 0; level < kLevels; ++level)
        wait.seen[level] = see(levelName(level));
    }
    sleepMs(kPauseMs);
  }
  return false;
}

// A lock that can't be asked is gone, and another one that comes meanwhile is somebody's: nothing
// is deleted but the very file that was seen from the beginning.
bool ResultsLock::removeIfStale(const Wait& wait) const {
  const FixedString path = ageName(name);
  if (mayBeAged && isAbandoned(wait.seen[0], see(path))) {
    const SignalHold hold;
    removeAbandoned(wait, 0);
  }
  return !fileStatus(path);
}

FixedString ResultsLock::levelName(std::size_t level) const {
  constexpr std::array<std::string_view, kLevels> kEndings = {"", ".take", ".take2"};
  return ageName(name).append(kEndings[level]);
}

// Clients that find an old lock together look at its age at the same time. Without a guard one of
// them would delete it, and the next, a moment late, the lock that the first has created since. A
// guard that was left behind goes the same way, under a guard of its own; only the last one, left
// behind in the moment in which another was taken over, has none.
void ResultsLock::removeAbandoned(const Wait& wait, std::size_t level) const {
  ExclusiveFile guard;
  const std::size_t above = level + 1;
  if (above < kLevels && !guard.create(levelName(above))) return removeAbandoned(wait, above);
  const FixedString path = levelName(level);
  if (isAbandoned(wait.seen[level], seeByOpening(path))) (void)unlink(path.c_str());
}

void ResultsLock::writeNote(const WideFixedString& ownerText) {
  FixedString note = "\n File locked by: ";
  note.append(narrowedText<499>(ownerText));
  note.append(" Time locked: ").append(dateText(currentSeconds()));
  note.append("\nInfo: This lock file should only exist a few seconds.\n\n");
  // The note is for people; the lock holds without it.
  file.write(note);
}

void ResultsLock::release() noexcept {
  if (!file.isOwned()) return;
  if (!file.remove() && mayBeAged) {
    WideFixedString aside = name;
    aside.append(u".none");
    (void)moveFile(ageName(name), ageName(aside), true);
  }
  interruptions.reset();
}

bool moveFile(const FixedString& from, const FixedString& to, bool overwrite) {
  if (fileStatus(to)) {
    if (!overwrite) return true;
    if (unlink(to.c_str()) != 0) return false;
  }
  if (!fileStatus(from)) return false;
  return std::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace marrowbench
