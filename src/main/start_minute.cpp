#include "main/start_minute.h"

#include "support/clock.h"

namespace marrowbench {

std::int64_t startMinuteFor(std::int64_t foundAt) { return (foundAt + 15) / 60 + 1; }

std::int32_t shownWaitSeconds(std::int64_t startMinute, std::int64_t now) {
  return static_cast<std::int32_t>(60 * (startMinute - now / 60) + now % 60);
}

void waitForMinute(std::int64_t startMinute) {
  // The sleep follows every reading, the last one too, so the tests begin 2 to 4 s into the minute.
  std::int64_t minute = 0;
  do {
    minute = currentSeconds() / 60;
    sleepMs(2000);
  } while (minute < startMinute);
}

}  // namespace marrowbench
