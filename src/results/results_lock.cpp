#include "results/results_lock.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "support/clock.h"
#include "support/file_status.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

constexpr std::int32_t kPauseMs = 250;

// The age is the server's time of creation against the client's clock: the margin absorbs what
// their clocks differ by.
constexpr std::int64_t kStaleSeconds = 10800;

// The two kinds of call take copies of different length. It matters only for a name of 250
// characters: the lock file then bears one character less than the name that is aged and renamed.
FixedString createName(const WideFixedString& name) { return narrowedText<249>(name).view(); }
FixedString ageName(const WideFixedString& name) { return narrowedText<499>(name).view(); }

bool pathExists(const FixedString& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

bool folderStandsAt(const FixedString& path) { return pathExists(path) && !fileStatus(path); }

void setWaited(int* waitedMs, int value) {
  if (waitedMs != nullptr) *waitedMs = value;
}

}  // namespace

ResultsLock::ResultsLock(const WideFixedString& resultsPath) : name(resultsPath) {
  name.append(u"_lock.txt");
}

ResultsLock::~ResultsLock() { release(); }

bool ResultsLock::acquire(int& timeoutMs, const WideFixedString& ownerText, int* waitedMs,
                          bool probeOnly) {
  setWaited(waitedMs, 1);
  const int tries = std::max(timeoutMs / kPauseMs, 1);
  int count = 0;
  int countAtLastRace = -1;
  int vainRaces = 0;
  for (;;) {
    const bool isFree = waitUntilFree(tries, count);
    setWaited(waitedMs, count * kPauseMs);
    if (!isFree && !removeIfStale()) return false;
    if (probeOnly) return true;

    if (create()) break;
    // EEXIST is another client that came first, and worth another look, unless a folder bears the
    // name. Without a sleep since the last EEXIST something else is wrong: the name is cut, it is a
    // dangling link, or the share shows old entries.
    const bool lostRace = errno == EEXIST && !folderStandsAt(createName(name));
    const bool inVain = lostRace && count == countAtLastRace;
    if (!lostRace || (inVain && ++vainRaces > tries)) {
      setWaited(waitedMs, -count * kPauseMs);
      return false;
    }
    if (inVain) sleepMs(kPauseMs);
    countAtLastRace = count;
  }
  writeNote(ownerText);
  return true;
}

// Signals wait from before the file exists until it is deleted: nobody else would delete it.
bool ResultsLock::create() {
  interruptions.emplace();
  file = std::fopen(createName(name).c_str(), "wx");
  if (file != nullptr) return true;
  const int code = errno;
  interruptions.reset();
  errno = code;
  return false;
}

bool ResultsLock::waitUntilFree(int tries, int& count) const {
  const FixedString path = createName(name);
  for (; count < tries; ++count) {
    if (!pathExists(path)) return true;
    sleepMs(kPauseMs);
  }
  return false;
}

bool ResultsLock::removeIfStale() const {
  const FixedString path = ageName(name);
  std::int64_t modified = 0;
  (void)fileStatus(path, &modified);
  if (timePassed(modified, kStaleSeconds) && pathExists(path)) (void)unlink(path.c_str());
  return !fileStatus(path);
}

void ResultsLock::writeNote(const WideFixedString& ownerText) const {
  FixedString note = "\n File locked by: ";
  note.append(narrowedText<499>(ownerText));
  note.append(" Time locked: ").append(dateText(currentSeconds()));
  note.append("\nInfo: This lock file should only exist a few seconds.\n\n");
  // The note is for people; the lock holds without it.
  (void)std::fwrite(note.c_str(), note.length(), 1, file);
  (void)std::fflush(file);
}

void ResultsLock::release() noexcept {
  if (file == nullptr) return;
  (void)std::fclose(file);
  file = nullptr;
  if (unlink(createName(name).c_str()) != 0) {
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
