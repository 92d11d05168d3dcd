#include "marrowctl/fleet/start_window.h"

#include <algorithm>

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMinuteMs = 60'000;
// From this second on a client waits for the minute after the next one.
constexpr std::int64_t kLastSecondMs = 45'000;
constexpr std::int64_t kBestSecondMs = 46'000;

// The first minute that a client which finds the file at this moment of its clock may start in.
std::int64_t startFor(std::int64_t clientMs) {
  return (clientMs + kMinuteMs - kLastSecondMs) / kMinuteMs * kMinuteMs + kMinuteMs;
}

}  // namespace

std::int64_t bestMoment(std::int64_t shareMs, const ClockSpan& clocks) {
  const std::int64_t shown = (shareMs + clocks.slowestMs) % kMinuteMs;
  return shareMs + (kBestSecondMs - shown + kMinuteMs) % kMinuteMs;
}

StartWindow windowFrom(std::int64_t shareMs, const ClockSpan& clocks) {
  const std::int64_t slowest = shareMs + clocks.slowestMs;
  const std::int64_t fastest = shareMs + clocks.fastestMs;
  StartWindow window;
  // A clock that has passed the border already belongs to the minute after it.
  window.startMs = startFor(slowest);
  const std::int64_t border = window.startMs - kMinuteMs + kLastSecondMs;
  window.lengthMs = std::max<std::int64_t>(border - fastest, 0);
  return window;
}

}  // namespace marrowbench::ctl
