#include "marrowctl/run/start_wait.h"

namespace marrowbench::ctl {

std::int64_t startTimeFrom(std::int64_t shown, std::int64_t now) {
  constexpr std::int64_t kMinute = 60;
  // 60 x the minutes to come + the seconds of the minute in which it was printed: they tell when
  // that was, even where the next minute has begun since.
  const std::int64_t sincePrinted = ((now - shown) % kMinute + kMinute) % kMinute;
  const std::int64_t printed = now - sincePrinted;
  return (printed / kMinute + shown / kMinute) * kMinute;
}

}  // namespace marrowbench::ctl
