#ifndef MARROWBENCH_MARROWCTL_PLAN_FILE_SIZES_H
#define MARROWBENCH_MARROWCTL_PLAN_FILE_SIZES_H

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "marrowctl/plan/files_here.h"

namespace marrowbench::ctl {

inline constexpr std::int64_t kUnknownSize = -1;

/// So many files of one size, in order of iterations.
struct SizedFiles {
  std::int64_t count = 0;
  std::int64_t size = kUnknownSize;
};

/// The files of all iterations of a path, which has kIterationMark where their number stands. A
/// path without the mark has one file.
struct FileFamily {
  std::vector<SizedFiles> files;  ///< from iteration 0; sizes as written last
  bool isPerHost = false;         ///< other clients have other files
};

/// How large the files are that tests have written so far, and those that exist on this machine.
class FileSizes {
 public:
  /// Files that a test writes, over those of tests before it.
  void write(const std::string& path, const std::vector<SizedFiles>& files, bool isPerHost);

  /// The files that a test reads in so many iterations: as written, else as they exist here.
  [[nodiscard]] std::vector<SizedFiles> sizesOf(const std::string& path, std::int64_t iterations);

  /// True when tests also write this file by a path with the number of the iteration.
  [[nodiscard]] bool isInFamily(const std::string& path) const {
    return memberSize(path).has_value();
  }

  [[nodiscard]] const std::unordered_map<std::string, FileFamily>& families() const {
    return written;
  }

  /// Size of a file that exists here, else kUnknownSize.
  [[nodiscard]] std::int64_t sizeHere(const std::string& path) {
    return here.sizeOf(path).value_or(kUnknownSize);
  }

 private:
  [[nodiscard]] std::int64_t sizeOf(const std::string& path);
  [[nodiscard]] std::optional<std::int64_t> memberSize(const std::string& path) const;

  std::unordered_map<std::string, FileFamily> written;
  FilesHere here;
  bool hasMarks = false;  // of a path that is written
};

}  // namespace marrowbench::ctl

#endif
