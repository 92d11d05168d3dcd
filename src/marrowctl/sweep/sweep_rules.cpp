#include <string>

#include "marrowctl/sweep/sweep_lines.h"
#include "marrowctl/sweep/sweep_paths.h"

namespace marrowbench::ctl {
namespace {

using Refusal = std::optional<SweepRefusal>;

constexpr std::size_t kLongestLine = 1000;
constexpr std::size_t kLongestPath = 500;
// A longer one has no lock of its own.
constexpr std::size_t kLongestTable = 248;

std::string testOf(const SweepLine& line) {
  constexpr const char* kKinds[] = {"copy", "read", "write"};
  return std::string(wordOf(line.method)) + " " + kKinds[static_cast<std::size_t>(line.kind)];
}

Refusal chunkRefusal(const SweepLine& line) {
  if (line.chunkKib != 0) return {};
  if (line.kind == TestType::copy && line.method != Method::stream) {
    return SweepRefusal{
        "chunk", "0 is no chunk of a " + testOf(line) + ": only streams copy a whole file at once"};
  }
  if (line.waitMs == 0) return {};
  return SweepRefusal{"wait", "there are no chunks to wait after with a chunk size of 0"};
}

Refusal flushRefusal(const SweepLine& line) {
  if (!line.flush) return {};
  if (line.kind == TestType::read || line.method == Method::posix) {
    return SweepRefusal{"flush", "a " + testOf(line) + " does not flush"};
  }
  if (line.chunkKib != 0) return {};
  return SweepRefusal{"flush", "there are no chunks to flush after with a chunk size of 0"};
}

Refusal preallocRefusal(const SweepLine& line) {
  if (!line.prealloc || (line.method == Method::posix && line.kind != TestType::read)) return {};
  return SweepRefusal{"prealloc",
                      "a " + testOf(line) + " does not preallocate: posix writes and copies do"};
}

// The buffer is set for both files of a copy, and by streams for a file that is read.
Refusal bufferRefusal(const SweepLine& line) {
  if (line.buffer < 1) return {};
  const bool isSet = line.kind == TestType::copy
                         ? line.method != Method::posix
                         : line.kind == TestType::read && line.method == Method::stream;
  if (isSet && line.chunkKib != 0) return {};
  if (isSet)
    return SweepRefusal{"buffer", "there is no buffer of the chunk size with a chunk size of 0"};
  return SweepRefusal{"buffer", "a " + testOf(line) +
                                    " takes no buffer: copies by ansic and stream and " +
                                    "reads by stream do"};
}

Refusal pathRefusal(const SweepLine& line, const std::string& folder) {
  if (longestLength(line.table, folder) > kLongestTable) {
    return SweepRefusal{"table",
                        "its path may pass 248 characters, so that it has no lock of its own"};
  }
  if (longestLength(line.log, folder) > kLongestPath)
    return SweepRefusal{"log", "its path may pass 500 characters"};
  if (longestLength(line.dest, folder) > kLongestPath)
    return SweepRefusal{"dest", "its path may pass 500 characters"};
  if (longestLength(line.source, folder) > kLongestPath)
    return SweepRefusal{"source", "its path may pass 500 characters"};
  if (textOf(line, false).size() > kLongestLine)
    return SweepRefusal{"dest", "the line passes 1,000 characters"};
  if (line.kind != TestType::copy || line.source != line.dest) return {};
  return SweepRefusal{"dest", "\"" + line.dest + "\" is copied onto itself"};
}

}  // namespace

std::optional<SweepRefusal> refusalOf(const SweepLine& line, const std::string& settingsFolder) {
  for (const auto rule : {chunkRefusal, flushRefusal, preallocRefusal, bufferRefusal}) {
    if (Refusal r = rule(line)) return r;
  }
  return pathRefusal(line, settingsFolder);
}

}  // namespace marrowbench::ctl
