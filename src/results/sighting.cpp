#include "results/sighting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "support/clock.h"

namespace marrowbench {
namespace {

// The age is the server's time of creation against the client's clock: the margin absorbs what
// their clocks differ by.
constexpr std::int64_t kAbandonedSeconds = 10800;

std::optional<Sighting> sightingOf(const struct stat& status) {
  if (!S_ISDIR(status.st_mode)) return Sighting{status.st_dev, status.st_ino, status.st_mtime};
  errno = EISDIR;
  return std::nullopt;
}

}  // namespace

std::optional<Sighting> see(const FixedString& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return sightingOf(status);
}

std::optional<Sighting> seeByOpening(const FixedString& path) {
  // Not blocking: a pipe of that name would wait for a writer.
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return see(path);
  const std::optional<Sighting> seen = seeOpen(descriptor);
  (void)close(descriptor);
  return seen;
}

std::optional<Sighting> seeOpen(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return std::nullopt;
  return sightingOf(status);
}

bool mayBeOne(const Sighting& own, const Sighting& there) {
  return own.hasNumberOf(there) && std::abs(own.modified - there.modified) < 9;
}

bool isAbandoned(const std::optional<Sighting>& first, const std::optional<Sighting>& now) {
  return now && first == now && timePassed(now->modified, kAbandonedSeconds);
}

}  // namespace marrowbench
