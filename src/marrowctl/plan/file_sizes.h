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
  std::string path;               ///< as a test names it
  std::vector<SizedFiles> files;  ///< from iteration 0; sizes as written last
  bool isPerHost = false;         ///< other clients have other files
};

/// How a test writes its files.
struct Writing {
  bool isPerHost = false;  ///< other clients have other files
  bool keepsEnd = false;   ///< what is there is not truncated: of a longer file the end stays
};

/// How large the files are that tests have written so far, and those that exist on this machine.
class FileSizes {
 public:
  /// Files that a test writes, over those of tests before it.
  void write(const std::string& path, std::vector<SizedFiles> files, Writing how);

  /// The files that a test reads in so many iterations: as written, else as they exist here.
  [[nodiscard]] std::vector<SizedFiles> sizesOf(const std::string& path, std::int64_t iterations);

  /// True when tests also write this file by a path with the number of the iteration.
  ///
  /// @param name  oneSpelling() of its path
  [[nodiscard]] bool isInFamily(const std::string& name) const {
    return membershipOf(name).has_value();
  }

  /// By oneSpelling() of their paths.
  [[nodiscard]] const std::unordered_map<std::string, FileFamily>& families() const {
    return written;
  }

  /// Size of a file that exists here, else kUnknownSize.
  [[nodiscard]] std::int64_t sizeHere(const std::string& path) {
    return here.sizeOf(path).value_or(kUnknownSize);
  }

 private:
  [[nodiscard]] std::vector<SizedFiles> sizesNamed(const std::string& name,
                                                   std::int64_t iterations);
  [[nodiscard]] bool mayExist(const std::string& name);
  [[nodiscard]] std::int64_t sizeOf(const std::string& name);

  // A file of a family.
  struct Membership {
    std::string family;  // its name
    std::int64_t iteration = 0;
  };
  [[nodiscard]] std::optional<Membership> membershipOf(const std::string& name) const;

  // A file that is a family's member has its size there, whoever wrote it last.
  std::unordered_map<std::string, FileFamily> written;
  FilesHere here;
  bool hasMarks = false;    // of a path that is written
  bool hasSingles = false;  // paths without marks
};

}  // namespace marrowbench::ctl

#endif
