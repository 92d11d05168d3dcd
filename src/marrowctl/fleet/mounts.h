#ifndef MARROWBENCH_MARROWCTL_FLEET_MOUNTS_H
#define MARROWBENCH_MARROWCTL_FLEET_MOUNTS_H

#include <istream>
#include <optional>
#include <string>

namespace marrowbench::ctl {

/// What is mounted where a folder lies.
struct Mount {
  std::string point;    ///< where it is mounted
  std::string type;     ///< "nfs4", "fuse.sshfs", "tmpfs"
  std::string source;   ///< "server:/export"
  std::string options;  ///< "rw,relatime,vers=4.1"

  /// Whether an option is among them, as a word of its own: "lookupcache=positive".
  [[nodiscard]] bool has(const std::string& option) const;
};

/// Of a list in the form of /proc/self/mounts the mount on which the path lies, which is absolute
/// and free of links.
[[nodiscard]] std::optional<Mount> mountIn(std::istream& mounts, const std::string& path);

/// The mount of a folder; nothing where the system does not tell.
[[nodiscard]] std::optional<Mount> mountOf(const std::string& folder);

}  // namespace marrowbench::ctl

#endif
