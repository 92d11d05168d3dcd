#ifndef MARROWBENCH_FILEACCESS_RUN_STATS_H
#define MARROWBENCH_FILEACCESS_RUN_STATS_H

#include <cstdint>

namespace marrowbench {

/// 1,048,576 bytes: the chunk size by which a run's chunks are counted when none was set.
[[nodiscard]] constexpr std::int32_t defaultStepBytes() { return 1048576; }

/// The largest file of a read or write test: 1 GiB, the size of the shared memory buffer.
inline constexpr std::int32_t kMaxFileSize = 1073741824;

/// What the timed loops measure. A fresh record is the reset record.
struct RunStats {
  std::int64_t bytes = 0;                       ///< bytes transferred, summed
  std::uint16_t waitMs = 0;                     ///< low 16 bits of the pause after each chunk, ms
  std::int32_t files = 0;                       ///< recorded runs
  std::int64_t dataMs = 0;                      ///< milliseconds of the recorded runs, summed
  std::int64_t runWord = 1;                     ///< 1 after a reset; no method reads it
  std::uint16_t chunks = 0;                     ///< chunks counted; wraps at 65,536
  std::int32_t stepBytes = defaultStepBytes();  ///< bytes by which chunks are counted
};

static_assert(sizeof(RunStats) == 40);

/// Adds one finished run. Nothing happens when a value is negative. Chunks, bytes / stepBytes in
/// 16 bits, are counted only when pauses are made: they are for the share of time these take.
void recordRun(RunStats& stats, std::int64_t bytes, std::int64_t ms);

/// The test parameters that a settings line gives and every method object gets as a whole.
struct ParameterBlock {
  std::int32_t systemBuffer = -1;   ///< below 0: the interface's own buffering; 0: none; above 0:
                                    ///< full, with a buffer of chunkSize bytes
  std::int32_t chunkWait = 0;       ///< pause after every chunk, ms; below 1 is none
  std::int32_t chunkSize = 0;       ///< bytes per chunk; 0 or less is one single transfer
  bool prealloc = false;            ///< preallocate the file written
  bool flush = false;               ///< flush after every written chunk
  std::int32_t emptyCacheMode = 0;  ///< carried and reported, acted on by no class
  std::int32_t fileSize = 0;        ///< bytes to transfer
  std::int64_t nullPosition = -1;   ///< -1: not checked; 0: no null data; above 0: the position
                                    ///< before which null data was found
  RunStats stats;                   ///< what the last run measured
  std::int64_t startMs = 0;         ///< wall-clock ms at the start of the last run
};

static_assert(sizeof(ParameterBlock) == 80);

}  // namespace marrowbench

#endif
