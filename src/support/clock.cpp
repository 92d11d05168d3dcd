#include "support/clock.h"

#include "support/system_clock.h"

namespace marrowbench {

void secondsFromNow(std::int64_t& out, std::int64_t seconds) { out = systemSeconds() + seconds; }

void timeNow(std::int64_t& out, bool take) { out = take ? systemSeconds() : 0; }

std::int64_t& copyTime(std::int64_t& out, std::int64_t in) { return out = in; }

bool timePassed(std::int64_t a, std::int64_t b) { return systemSeconds() > a + b; }

std::int64_t currentSeconds() {
  std::int64_t now = 0;
  timeNow(now, true);
  return now;
}

void nowMs(std::int64_t& out) { out = systemMilliseconds(); }

std::int32_t elapsedMs(std::int64_t start) {
  const auto now = static_cast<std::uint32_t>(systemMilliseconds());
  const std::uint32_t difference = now - static_cast<std::uint32_t>(start);
  return static_cast<std::int32_t>(difference & 0x7FFFFFFFU);
}

void sleepMs(std::int32_t milliseconds) {
  // No single call reaches one second: usleep() may refuse 1,000,000 microseconds and more.
  constexpr std::int32_t kLongestPieceMs = 999;
  while (milliseconds >= kLongestPieceMs) {
    systemSleep(kLongestPieceMs * 1000);
    milliseconds -= kLongestPieceMs;
  }
  if (milliseconds > 0) systemSleep(static_cast<std::uint32_t>(milliseconds) * 1000);
}

}  // namespace marrowbench
