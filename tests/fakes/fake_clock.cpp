#include "fakes/fake_clock.h"

#include "support/system_clock.h"

namespace marrowbench {

std::int64_t systemSeconds() {
  test::FakeClock& clock = test::fakeClock();
  const std::int64_t reading = clock.seconds();
  clock.now += clock.secondsPerReading * 1'000'000;
  if (clock.duringReading) clock.duringReading();
  return reading;
}

std::int64_t systemMilliseconds() {
  test::FakeClock& clock = test::fakeClock();
  const std::int64_t reading = clock.now / 1000;
  clock.now += clock.msPerReading * 1000;
  return reading;
}

void systemSleep(std::uint32_t microseconds) {
  test::FakeClock& clock = test::fakeClock();
  clock.sleeps.push_back(microseconds);
  clock.now += microseconds;
  if (clock.duringSleep) clock.duringSleep();
}

namespace test {

FakeClock& fakeClock() {
  static FakeClock clock;
  return clock;
}

}  // namespace test
}  // namespace marrowbench
