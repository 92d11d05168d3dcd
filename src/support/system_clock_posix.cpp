#include <sys/time.h>
#include <unistd.h>

#include <ctime>

#include "support/system_clock.h"

namespace marrowbench {

std::int64_t systemSeconds() { return std::time(nullptr); }

std::int64_t systemMilliseconds() {
  timeval now{};
  (void)gettimeofday(&now, nullptr);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_usec / 1000;
}

void systemSleep(std::uint32_t microseconds) { (void)usleep(microseconds); }

}  // namespace marrowbench
