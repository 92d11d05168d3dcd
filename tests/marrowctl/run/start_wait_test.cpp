#include "marrowctl/run/start_wait.h"

#include <gtest/gtest.h>

#include "main/start_minute.h"

namespace marrowbench::ctl {
namespace {

TEST(StartTimeFrom, IsTheMinuteForWhichTheProgramWaits) {
  // Every second of some minutes, read at once or some seconds later.
  constexpr std::int64_t kBegin = 1'700'000'000;
  for (std::int64_t found = kBegin; found < kBegin + 200; ++found) {
    const std::int64_t minute = startMinuteFor(found);
    for (const std::int64_t printed : {found, found + 3}) {
      const std::int64_t shown = shownWaitSeconds(minute, printed);
      for (const std::int64_t read : {printed, printed + 1, printed + 20})
        EXPECT_EQ(startTimeFrom(shown, read), minute * 60) << found << ' ' << read;
    }
  }
}

}  // namespace
}  // namespace marrowbench::ctl
