#include "fileaccess/run_stats.h"

namespace marrowbench {

void recordRun(RunStats& stats, std::int64_t bytes, std::int64_t ms) {
  if (bytes < 0 || ms < 0) return;
  stats.files += 1;
  stats.bytes += bytes;
  stats.dataMs += ms;
  if (stats.stepBytes > 0 && stats.waitMs != 0) {
    stats.chunks = static_cast<std::uint16_t>(stats.chunks + bytes / stats.stepBytes);
  }
}

}  // namespace marrowbench
