#ifndef MARROWBENCH_TESTS_FAKES_FAKE_CLOCK_H
#define MARROWBENCH_TESTS_FAKES_FAKE_CLOCK_H

#include <cstdint>
#include <functional>
#include <vector>

namespace marrowbench::test {

/// The clock that unit tests link in place of the system's. Sleeping moves it on and takes no time.
struct FakeClock {
  /// Microseconds since the epoch; 1,700,000,000 s is 14 November 2023, 22:13:20 UTC.
  std::int64_t now = 1'700'000'000'000'000;
  /// Every sleep so far, in microseconds.
  std::vector<std::uint32_t> sleeps;
  /// Milliseconds by which each reading in milliseconds moves the clock on, after the reading.
  std::int64_t msPerReading = 0;
  /// Seconds by which each reading in seconds moves the clock on, after the reading.
  std::int64_t secondsPerReading = 0;
  /// Runs at every reading in seconds: what other clients do at that moment.
  std::function<void()> duringReading;
  /// Runs at the end of every sleep: what other clients do meanwhile.
  std::function<void()> duringSleep;

  void setSeconds(std::int64_t seconds) { now = seconds * 1'000'000; }
  [[nodiscard]] std::int64_t seconds() const { return now / 1'000'000; }
};

/// The one fake clock; every test starts with a fresh one.
FakeClock& fakeClock();

}  // namespace marrowbench::test

#endif
