#include "run/summary_line.h"

#include <array>
#include <cstdio>
#include <limits>

#include "paths/log_line.h"
#include "paths/path_text.h"

namespace marrowbench {
namespace {

constexpr float kPerKi = 1.0F / 1024.0F;

// What x86-64 processors answer to a conversion that does not fit, made explicit so that every
// client shows the same.
template <class Integer>
Integer truncated(double value) {
  constexpr auto kLowest = static_cast<double>(std::numeric_limits<Integer>::min());
  const bool fits = value >= kLowest && value < -kLowest;
  return fits ? static_cast<Integer>(value) : std::numeric_limits<Integer>::min();
}

// In single precision like the value, so that every client rounds alike.
float halfAdded(float value) { return value < 0.0F ? value - 0.5F : value + 0.5F; }

float mebibytes(const RunStats& stats) {
  return static_cast<float>(static_cast<std::uint64_t>(stats.bytes)) * kPerKi * kPerKi;
}

ShortText timeText(std::uint64_t ms) {
  const bool isShort = ms < 60001;
  const auto whole = static_cast<int>(isShort ? ms / 1000 : ms / 60000);
  const auto rest = static_cast<int>(isShort ? ms % 1000 / 10 : ms / 1000 % 60);
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), isShort ? "%d.%02ds" : "%d.%02dm.s", whole, rest);
  return text.data();
}

}  // namespace

float copySpeedPercent(RunStats& stats) {
  if (stats.waitMs == 0 || stats.dataMs == 0) return 100.0F;
  if (stats.stepBytes <= 0) stats.stepBytes = defaultStepBytes();
  if (stats.chunks == 0) {
    stats.chunks = static_cast<std::uint16_t>(static_cast<std::uint64_t>(stats.bytes) /
                                              static_cast<std::uint64_t>(stats.stepBytes));
  }
  const auto pauseMs = static_cast<std::int32_t>(std::uint32_t{stats.chunks} * stats.waitMs);
  return (1.0F - static_cast<float>(pauseMs) / static_cast<float>(stats.dataMs)) * 100.0F;
}

std::int64_t kibPerSecond(const RunStats& stats) {
  const float speed =
      static_cast<float>(stats.bytes) * kPerKi * 1000.0F / static_cast<float>(stats.dataMs);
  return truncated<std::int64_t>(static_cast<double>(speed) + 0.5);
}

std::int64_t roundedCopySpeedPercent(RunStats& stats) {
  return truncated<std::int64_t>(halfAdded(copySpeedPercent(stats)));
}

FixedString summaryLine(RunStats& stats, bool fixedWidth) {
  const float mib = mebibytes(stats);
  const float speed = stats.dataMs == 0 ? 0.0F : mib * 1000.0F / static_cast<float>(stats.dataMs);
  const auto percent = truncated<std::int32_t>(halfAdded(copySpeedPercent(stats)));
  const ShortText time = timeText(static_cast<std::uint64_t>(stats.dataMs));

  std::array<char, FixedString::capacity() + 1> text{};
  (void)std::snprintf(
      text.data(), text.size(),
      fixedWidth ? "%4d files copied ( %7.2f MiB. %s. %7.3f MiB/s. Copy speed setting: %3d"
                 : "%d files copied ( %0.2f MiB. %s. %0.3f MiB/s. Copy speed setting: %d",
      stats.files, static_cast<double>(mib), time.c_str(), static_cast<double>(speed), percent);
  return FixedString(text.data()).append("% )");
}

bool printEmptyCacheInfo(TestConfig& config) {
  const bool acts = config.method == Method::posix || config.method == Method::system;
  if (acts && config.parameters.parameters.emptyCacheMode == 4) {
    writeLogLine(config.logPath, "Empty Cache mode 4 POSIX_FADV_NOREUSE | POSIX_FADV_DONTNEED");
  }
  return true;
}

void printDestinationInfo(TestConfig& config) {
  if (!isMemoryPath(config.dest)) {
    useForwardSlashes(config.dest);
    writeLogLine(config.logPath,
                 "Destination fileserver IP: ", formatNetworkAddress(config.destAddress));
  }
  if (!isMemoryPath(config.source)) useForwardSlashes(config.source);
  config.interfaceCount = 0;
}

}  // namespace marrowbench
