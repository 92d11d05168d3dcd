#ifndef MARROWBENCH_MARROWCTL_SWEEP_SWEEP_LINES_H
#define MARROWBENCH_MARROWCTL_SWEEP_SWEEP_LINES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "marrowctl/sweep/matrix.h"
#include "settings/test_config.h"

namespace marrowbench::ctl {

/// A test line of a sweep.
struct SweepLine {
  TestType kind = TestType::write;
  Method method = Method::posix;
  std::int64_t chunkKib = 0, sizeKib = 0;  ///< size 0: the source has its own
  std::int64_t buffer = 0, waitMs = 0, iterations = 1;
  bool flush = false, prealloc = false;
  std::string source, dest;  ///< empty: memory
  std::string log, table;
};

/// All lines in the order in which they are run: sources that no write of the matrix leaves, then
/// step by step of the sizes the writes, copies and reads, the methods from left to right and back
/// in turn. A source is a file of the same client: it holds "[host]" where the file's name does.
[[nodiscard]] std::vector<SweepLine> linesOf(const Matrix& matrix);

/// How many lines linesOf() gives at most; what does not fit 32 bits is given as what does.
[[nodiscard]] std::int64_t mostLinesOf(const Matrix& matrix);

/// "posix", "ansic" or "stream", the methods of a sweep.
[[nodiscard]] const char* wordOf(Method method);

/// The text of a line, without its end.
[[nodiscard]] std::string textOf(const SweepLine& line, bool markDone);

/// What the program would leave out, refuse or cut in a line.
///
/// @param settingsFolder  folder of the settings file
[[nodiscard]] std::optional<SweepRefusal> refusalOf(const SweepLine& line,
                                                    const std::string& settingsFolder);

}  // namespace marrowbench::ctl

#endif
