#include "marrowctl/fleet/pace.h"

#include <algorithm>
#include <ctime>

#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kLeastPauseMs = 1000;
constexpr std::int64_t kMostPauseMs = 60'000;
constexpr std::int64_t kPartOfProcessor = 100;

std::int64_t processorMs() {
  return static_cast<std::int64_t>(std::clock()) * 1000 / std::int64_t{CLOCKS_PER_SEC};
}

}  // namespace

Pace::Pace(std::int64_t seconds) : intervalMs(seconds * 1000) { nowMs(lastMs); }

bool Pace::isDue() {
  std::int64_t now = 0;
  nowMs(now);
  if (now >= lastMs && now - lastMs < intervalMs) return false;
  lastMs = now;
  return true;
}

SparingPace::SparingPace() : usedMs(processorMs()) {}

std::int64_t SparingPace::pauseMs() {
  const std::int64_t before = usedMs;
  usedMs = processorMs();
  return std::clamp((usedMs - before) * kPartOfProcessor, kLeastPauseMs, kMostPauseMs);
}

}  // namespace marrowbench::ctl
