#include "marrowctl/fleet/share_clock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <limits>

#include "marrowctl/fleet/open_file.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMsOfSecond = 1000;
constexpr long kNanosecondsOfMs = 1'000'000;
constexpr int kMostReadings = 3;

// POSIX has one name for it, macOS another.
template <class Status>
timespec modified(const Status& status) {
  if constexpr (requires { status.st_mtim; }) {
    return status.st_mtim;
  } else {
    return status.st_mtimespec;
  }
}

std::int64_t localMs() {
  std::int64_t now = 0;
  nowMs(now);
  return now;
}

int writeFront(const std::string& path, std::string_view text) {
  OpenFile file(path, O_WRONLY | O_CREAT);
  if (!file.isOpen()) return errno;
  const int code = file.writeAt(0, text);
  const int closing = file.close();
  return code != 0 ? code : closing;
}

int readOnce(const std::string& path, std::string_view text, ClockReading& reading) {
  const std::int64_t before = localMs();
  if (const int code = writeFront(path, text); code != 0) return code;
  reading.durationMs = localMs() - before;
  reading.localMs = before + reading.durationMs / 2;
  // Opened once more: clients of shares ask the server then, where they answer from memory else.
  const OpenFile file(path, O_RDONLY);
  struct stat status {};
  if (!file.isOpen() || fstat(file.descriptor(), &status) != 0) return errno;
  reading.shareMs = modifiedMs(status);
  reading.hasFractions = modified(status).tv_nsec != 0;
  return 0;
}

}  // namespace

std::int64_t modifiedMs(const struct stat& status) {
  const timespec time = modified(status);
  return static_cast<std::int64_t>(time.tv_sec) * kMsOfSecond + time.tv_nsec / kNanosecondsOfMs;
}

std::optional<std::int64_t> modifiedMsOf(const std::string& path, std::int64_t* bytes) {
  const OpenFile file(path, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  const int failure =
      file.isOpen() ? fstat(file.descriptor(), &status) : stat(path.c_str(), &status);
  if (failure != 0) return std::nullopt;
  if (bytes != nullptr) *bytes = status.st_size;
  return modifiedMs(status);
}

int writeAndReadClock(const std::string& path, std::string_view text, ClockReading& reading) {
  std::int64_t shortest = std::numeric_limits<std::int64_t>::max();
  for (int i = 0; i < kMostReadings && shortest > kQuickReadingMs; ++i) {
    ClockReading next;
    if (const int code = readOnce(path, text, next); code != 0) return code;
    if (next.durationMs >= shortest) continue;
    shortest = next.durationMs;
    reading = next;
  }
  return 0;
}

int readShareClock(const std::string& folder, ClockReading& reading) {
  const std::string path =
      folder + "/.clock_" + std::to_string(localMs()) + "_" + std::to_string(getpid());
  const int code = writeAndReadClock(path, "What time is it here?\n", reading);
  (void)std::remove(path.c_str());
  return code;
}

std::int64_t ShareTime::nowMs() const { return localMs() - offset; }

}  // namespace marrowbench::ctl
