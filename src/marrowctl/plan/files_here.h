#ifndef MARROWBENCH_MARROWCTL_PLAN_FILES_HERE_H
#define MARROWBENCH_MARROWCTL_PLAN_FILES_HERE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace marrowbench::ctl {

/// What stands on this machine, where each path is looked at once. Links are followed.
class FilesHere {
 public:
  /// True when something bears the name, a folder too.
  [[nodiscard]] bool exists(const std::string& path) { return at(path).exists; }

  /// Bytes of a file; nothing for a folder and where there is none.
  [[nodiscard]] std::optional<std::int64_t> sizeOf(const std::string& path) {
    return at(path).size;
  }

 private:
  struct Entry {
    bool exists = false;
    std::optional<std::int64_t> size;
  };

  Entry at(const std::string& path);
  [[nodiscard]] bool hasFolderOf(std::string_view path);

  std::unordered_map<std::string, Entry> entries;
  std::unordered_map<std::string, bool> folders;  // of paths that were looked at: it exists
};

}  // namespace marrowbench::ctl

#endif
