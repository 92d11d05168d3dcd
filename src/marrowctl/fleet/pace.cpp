#include "marrowctl/fleet/pace.h"

#include "support/clock.h"

namespace marrowbench::ctl {

Pace::Pace(std::int64_t seconds) : intervalMs(seconds * 1000), lastMs(0) { nowMs(lastMs); }

bool Pace::isDue() {
  std::int64_t now = 0;
  nowMs(now);
  if (now >= lastMs && now - lastMs < intervalMs) return false;
  lastMs = now;
  return true;
}

}  // namespace marrowbench::ctl
