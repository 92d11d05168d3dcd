#include "marrowctl/check/changes.h"

namespace marrowbench::ctl {
namespace {

std::string_view whyNoFlush(const PlannedTest& test) {
  return test.used.chunkSize == 0 ? "a file that moves in one step is not flushed between chunks"
                                  : "a read has nothing to flush";
}

std::string_view whyNoPreallocation(const PlannedTest& test) {
  return test.method == Method::posix ? "a read reserves no space" : "only Posix reserves space";
}

std::string_view whyOtherBuffer(const PlannedTest& test) {
  if (test.method == Method::system) return "System has no buffer";
  return test.used.systemBuffer < 0 ? "without chunks the library keeps its own buffer"
                                    : "1 is the largest System Buffer there is";
}

}  // namespace

std::vector<Change> changesOf(const PlannedTest& test) {
  const ParameterBlock& from = test.asWritten;
  const ParameterBlock& to = test.used;
  const Change all[] = {
      {"flush", from.flush, to.flush, true, false, whyNoFlush(test)},
      {"preallocate", from.prealloc, to.prealloc, true, false, whyNoPreallocation(test)},
      {"chunkWaitMs", from.chunkWait, to.chunkWait, false, false,
       "without chunks there is no pause"},
      {"chunkBytes", from.chunkSize, to.chunkSize, false, true, "this method needs chunks: 1 MiB"},
      {"systemBuffer", from.systemBuffer, to.systemBuffer, false, false, whyOtherBuffer(test)},
      {"fileBytes", from.fileSize, to.fileSize, false, true, "no file is larger than 1 GiB"},
  };
  std::vector<Change> changes;
  for (const Change& change : all) {
    if (change.from != change.to) changes.push_back(change);
  }
  return changes;
}

}  // namespace marrowbench::ctl
