#include "marrowctl/fleet/ready_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "marrowctl/fleet/open_file.h"
#include "marrowctl/fleet/share_clock.h"
#include "marrowctl/support/units.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr int kMostTries = 5;
constexpr int kTouchesPerClockReading = 6;
constexpr std::int32_t kLookEveryMs = 1000;
constexpr std::int64_t kMsOfSecond = 1000;

std::string shownProcess(const std::optional<ReadyNote>& note) {
  if (!note) return "another process";
  return "process " + std::to_string(note->pid) + " (" + note->machine.kernel + "), armed at " +
         note->time;
}

bool isSame(const SeenReadyFile& a, const SeenReadyFile& b) {
  return a.modifiedMs == b.modifiedMs && a.number == b.number;
}

}  // namespace

std::optional<SeenReadyFile> seeReadyFile(const std::string& path) {
  const OpenFile file(path, O_RDONLY);
  struct stat status {};
  if (!file.isOpen() || fstat(file.descriptor(), &status) != 0) return std::nullopt;
  SeenReadyFile seen{modifiedMs(status), status.st_ino, std::nullopt};
  std::string text;
  if (const int code = file.read(text); code != 0) {
    errno = code;
    return std::nullopt;
  }
  seen.note = readyNoteFrom(text);
  return seen;
}

ReadyFile::ReadyFile(const ControlFolder& folder, ReadyNote own)
    : folderPath(folder.path()), path(folder.ready(own.host)), note(std::move(own)) {}

Claim ReadyFile::claim(const Watcher& watcher) {
  int code = 0;
  for (int tries = 0; tries < kMostTries; ++tries) {
    code = create();
    if (code == 0) return {};
    // Not by the code: shares without one for "it exists" say EPERM.
    const std::optional<SeenReadyFile> other = seeReadyFile(path);
    if (!other) continue;
    Claim left = waitFor(*other, watcher);
    if (left.kind != Claim::Kind::held) return left;
    const std::optional<SeenReadyFile> now = seeReadyFile(path);
    // A third client may have taken its place meanwhile. Should both delete and create it at the
    // same moment, touch() tells them apart.
    if (now && isSame(*now, *other)) (void)std::remove(path.c_str());
  }
  return failed(code);
}

Claim ReadyFile::touch() {
  {
    const OpenFile file(path, O_RDONLY);
    if (!file.isOpen()) {
      const int code = errno == ENOENT ? create() : errno;
      return code == 0 ? Claim{} : failed(code);
    }
    std::string text;
    if (const int code = file.read(text); code != 0) return failed(code);
    const std::optional<ReadyNote> there = readyNoteFrom(text);
    if (there && there->id != note.id) return takenBy(there);
  }
  const int code = write();
  return code == 0 ? Claim{} : failed(code);
}

void ReadyFile::remove() {
  const std::optional<SeenReadyFile> seen = seeReadyFile(path);
  const bool isOwn = seen && seen->note && seen->note->id == note.id;
  if (isOwn) (void)std::remove(path.c_str());
}

int ReadyFile::create() {
  {
    OpenFile file(path, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.isOpen()) return errno;
    if (const int code = file.close(); code != 0) return code;
  }
  length = 0;
  writes = 0;
  const int code = write();
  if (code != 0) (void)std::remove(path.c_str());
  return code;
}

int ReadyFile::write() {
  const std::string text = textOf(note, length);
  length = text.size();
  if (writes++ % kTouchesPerClockReading != 0) {
    OpenFile file(path, O_WRONLY);
    if (!file.isOpen()) return errno;
    const int code = file.writeAt(0, text);
    const int closing = file.close();
    return code != 0 ? code : closing;
  }
  ClockReading reading;
  const int code = writeAndReadClock(path, text, reading);
  // While tests load the share, a reading may be off by seconds: an earlier one tells more.
  const bool isBetter = reading.durationMs <= std::max(kQuickReadingMs, clockReadingMs);
  if (code == 0 && (!note.clockOffsetMs || isBetter)) {
    note.clockOffsetMs = reading.offsetMs();
    clockReadingMs = reading.durationMs;
  }
  return code;
}

Claim ReadyFile::waitFor(const SeenReadyFile& other, const Watcher& watcher) const {
  ClockReading reading;
  if (const int code = readShareClock(folderPath, reading); code != 0) return failed(code);
  const ShareTime share(reading);
  bool isTold = false;
  for (;;) {
    const std::int64_t age = (share.nowMs() - other.modifiedMs) / kMsOfSecond;
    if (age >= kGoneSeconds) return {};
    if (!isTold) {
      watcher.say(path + " was touched " + shownDuration(std::max<std::int64_t>(age, 0)) +
                  " ago by " + shownProcess(other.note) + ". Waiting up to " +
                  shownDuration(kGoneSeconds - age) + " to see whether that still runs.");
      isTold = true;
    }
    if (watcher.isStopped()) return {Claim::Kind::stopped, ""};
    sleepMs(kLookEveryMs);
    const std::optional<SeenReadyFile> now = seeReadyFile(path);
    if (!now) return {};
    if (!isSame(*now, other)) return takenBy(now->note ? now->note : other.note);
  }
}

Claim ReadyFile::failed(int code) const {
  return {Claim::Kind::failed, path + ": " + std::strerror(code)};
}

Claim ReadyFile::takenBy(const std::optional<ReadyNote>& other) const {
  std::string reason = path + " is another client's: " + shownProcess(other) +
                       " touches it. Two clients are called " + note.host +
                       ", or this one is armed already: each needs a host name of its own.";
  if (note.host == "NoHostNameSet_")
    reason += " A client that is called localhost, or nothing, is NoHostNameSet_.";
  return {Claim::Kind::taken, reason};
}

}  // namespace marrowbench::ctl
