#ifndef MARROWBENCH_MARROWCTL_CHECK_SAME_FILE_H
#define MARROWBENCH_MARROWCTL_CHECK_SAME_FILE_H

#include <string>
#include <unordered_map>

namespace marrowbench::ctl {

/// Tells whether two paths lead to one file on this machine, through links of files or folders.
class SameFile {
 public:
  bool isSame(const std::string& a, const std::string& b);

 private:
  const std::string& realFolderOf(const std::string& path);

  std::unordered_map<std::string, std::string> realFolders;  // empty: it does not exist here
};

}  // namespace marrowbench::ctl

#endif
