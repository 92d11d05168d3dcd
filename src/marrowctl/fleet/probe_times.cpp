#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <limits>
#include <string>
#include <system_error>
#include <vector>

#include "marrowctl/fleet/crew.h"
#include "marrowctl/fleet/probe_steps.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kSecondNs = 1'000'000'000;
constexpr double kNsPerSecond = 1e9;
// Over more than a second, so that whole seconds are met at their beginning and at their end.
constexpr int kSamples = 24;
constexpr int kQuickSamples = 6;
constexpr useconds_t kPauseMicroseconds = 50'000;

// A file's time between two looks at this machine's clock, nanoseconds since the epoch.
struct Sample {
  std::int64_t before = 0, after = 0;
  std::int64_t time = 0;
};

std::int64_t localNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

// By how much the epoch of file times lies before that of the system's clock: whole seconds,
// another number with each library.
std::int64_t epochNs() {
  const auto file = std::chrono::duration_cast<std::chrono::nanoseconds>(
      fs::file_time_type::clock::now().time_since_epoch());
  const double seconds = static_cast<double>(localNs() - file.count()) / kNsPerSecond;
  return static_cast<std::int64_t>(seconds + (seconds < 0 ? -0.5 : 0.5)) * kSecondNs;
}

bool takeSample(const std::string& path, Sample& sample) {
  sample.before = localNs();
  const bool isWritten = writeProbeFile(path, "What time is it?\n") == 0;
  sample.after = localNs();
  // Opened, since clients of shares may answer from memory else.
  std::error_code code;
  const bool isRead = readProbeFile(path).has_value();
  const fs::file_time_type time = fs::last_write_time(path, code);
  sample.time =
      std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count() +
      epochNs();
  return isWritten && isRead && !code;
}

// The coarsest step that all times are multiples of.
std::int64_t granularityOf(const std::vector<Sample>& samples) {
  constexpr std::array<std::int64_t, 6> kSteps = {2 * kSecondNs, kSecondNs, 1'000'000,
                                                  1'000,         100,       1};
  for (const std::int64_t step : kSteps) {
    // Seconds are even by chance when all samples fall into one or two.
    const bool isTooCoarse =
        step > kSecondNs && samples.back().before - samples.front().before < step;
    const bool fits = std::all_of(samples.begin(), samples.end(),
                                  [step](const Sample& each) { return each.time % step == 0; });
    if (fits && !isTooCoarse) return step;
  }
  return 1;
}

}  // namespace

std::optional<FileTimes> measureTimes(const ProbeFolder& folder) {
  std::vector<Sample> samples;
  const int count = folder.isQuick ? kQuickSamples : kSamples;
  for (int i = 0; i < count && !isInterrupted(); ++i) {
    Sample sample;
    if (takeSample(folder.path + "/time", sample)) samples.push_back(sample);
    (void)usleep(kPauseMicroseconds);
  }
  if (samples.empty()) return std::nullopt;
  FileTimes times;
  times.granularityNs = granularityOf(samples);
  // The share's clock stood somewhere between the time and the next one it could have given, at
  // some moment between the two looks.
  std::int64_t least = std::numeric_limits<std::int64_t>::min();
  std::int64_t most = std::numeric_limits<std::int64_t>::max();
  for (const Sample& sample : samples) {
    least = std::max(least, sample.time - sample.after);
    most = std::min(most, sample.time + times.granularityNs - sample.before);
  }
  times.leastAheadSeconds = static_cast<double>(std::min(least, most)) / kNsPerSecond;
  times.mostAheadSeconds = static_cast<double>(std::max(least, most)) / kNsPerSecond;
  return times;
}

}  // namespace marrowbench::ctl
