#ifndef MARROWBENCH_MARROWCTL_SUPPORT_NEW_FILES_H
#define MARROWBENCH_MARROWCTL_SUPPORT_NEW_FILES_H

#include <string>
#include <vector>

namespace marrowbench::ctl {

/// A file that is to be written.
struct NewFile {
  std::string path;
  std::string text;
};

/// Why the files can't be written, as far as that can be known before: the problem with the path in
/// front. Empty: nothing is known against it.
///
/// @param overwrites  false: a file that exists already is a problem
[[nodiscard]] std::string problemWith(const std::vector<NewFile>& files, bool overwrites);

/// Writes all files or, as far as that can be known before, none. Each is written beside its place
/// and renamed, so that a client that waits for it never reads half of it; the last file comes
/// first, so that what a file chains to is there before it.
///
/// @return the problem, see problemWith(); empty: all are written
[[nodiscard]] std::string writeNewFiles(const std::vector<NewFile>& files, bool overwrites);

}  // namespace marrowbench::ctl

#endif
