#ifndef MARROWBENCH_MARROWCTL_FLEET_SHARE_CLOCK_H
#define MARROWBENCH_MARROWCTL_FLEET_SHARE_CLOCK_H

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The clock of the share: by it alone it is told what is old and what is new there, whatever the
/// clocks of the machines say.
namespace marrowbench::ctl {

/// One moment by two clocks.
struct ClockReading {
  std::int64_t shareMs = 0;   ///< milliseconds since the epoch: the time of a file written just now
  std::int64_t localMs = 0;   ///< this machine's, in the middle of the writing
  bool hasFractions = false;  ///< the share keeps times finer than a second
  std::int64_t durationMs = 0;  ///< of the writing: by half of it the offset may be wrong

  /// How far this machine's clock is ahead of the share's.
  [[nodiscard]] std::int64_t offsetMs() const { return localMs - shareMs; }
};

/// A reading that took longer tells little of a clock.
inline constexpr std::int64_t kQuickReadingMs = 200;

/// How much the share's times may be rounded down.
[[nodiscard]] constexpr std::int64_t roundingMs(const ClockReading& reading) {
  return reading.hasFractions ? 0 : 1000;
}

/// When the file was changed, milliseconds since the epoch.
[[nodiscard]] std::int64_t modifiedMs(const struct stat& status);

/// The same of a file by its path, as the server tells it: clients of shares remember times for up
/// to a minute, and ask the server when a file is opened. One that may not be read is not opened.
///
/// @param bytes  optional: receives the file's size
/// @return nothing: it is not there
[[nodiscard]] std::optional<std::int64_t> modifiedMsOf(const std::string& path,
                                                       std::int64_t* bytes = nullptr);

/// Writes the text over the front of a file, made where there is none, and reads the time that the
/// share gave it. What took long is done again, at most twice: the quickest reading counts.
///
/// @return errno of what failed; 0: the reading is taken
[[nodiscard]] int writeAndReadClock(const std::string& path, std::string_view text,
                                    ClockReading& reading);

/// The same with a file of its own in a folder, which goes away again.
[[nodiscard]] int readShareClock(const std::string& folder, ClockReading& reading);

/// Time on the share from one reading on, without asking it again.
class ShareTime {
 public:
  explicit ShareTime(const ClockReading& reading) : offset(reading.offsetMs()) {}

  /// Milliseconds since the epoch.
  [[nodiscard]] std::int64_t nowMs() const;

 private:
  std::int64_t offset;
};

}  // namespace marrowbench::ctl

#endif
