#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>

#include "support/system_clock.h"

// The clock of marrowbench_fast and marrowctl_fast, the programs as their users run them but with
// time MARROWBENCH_CLOCK_SPEED (60) times as fast: a wait for the start minute takes about a
// second. Programs that are started with the same MARROWBENCH_CLOCK_START (microseconds since the
// epoch) agree about the time. MARROWBENCH_CLOCK_OFFSET (microseconds) sets the clock of one of
// them wrong.
namespace marrowbench {
namespace {

std::int64_t realMicroseconds() {
  timeval now{};
  (void)gettimeofday(&now, nullptr);
  return static_cast<std::int64_t>(now.tv_sec) * 1'000'000 + now.tv_usec;
}

std::int64_t setting(const char* name, std::int64_t otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtoll(text, nullptr, 10);
}

std::int64_t speed() {
  static const std::int64_t factor = setting("MARROWBENCH_CLOCK_SPEED", 60);
  return factor;
}

std::int64_t microseconds() {
  static const std::int64_t start = setting("MARROWBENCH_CLOCK_START", realMicroseconds());
  static const std::int64_t offset = setting("MARROWBENCH_CLOCK_OFFSET", 0);
  return start + (realMicroseconds() - start) * speed() + offset;
}

}  // namespace

std::int64_t systemSeconds() { return microseconds() / 1'000'000; }
std::int64_t systemMilliseconds() { return microseconds() / 1000; }
void systemSleep(std::uint32_t length) {
  (void)usleep(length / static_cast<std::uint32_t>(speed()) + 1);
}

}  // namespace marrowbench
