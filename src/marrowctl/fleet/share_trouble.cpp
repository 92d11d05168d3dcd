#include "marrowctl/fleet/share_trouble.h"

#include <cerrno>

#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kPatienceMs = 60'000;

// A path that is misspelt, or somebody else's.
bool isWrongPlace(int code) {
  return code == ENOENT || code == ENOTDIR || code == EACCES || code == EPERM;
}

}  // namespace

bool ShareTrouble::isLasting(int code) {
  if (code == 0) {
    wasRead = true;
    sinceMs.reset();
    return false;
  }
  if (!wasRead && isWrongPlace(code)) return true;
  std::int64_t now = 0;
  nowMs(now);
  if (!sinceMs) sinceMs = now;
  return now - *sinceMs >= kPatienceMs;
}

}  // namespace marrowbench::ctl
