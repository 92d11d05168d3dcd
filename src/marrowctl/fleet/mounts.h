#ifndef MARROWBENCH_MARROWCTL_FLEET_MOUNTS_H
#define MARROWBENCH_MARROWCTL_FLEET_MOUNTS_H

#include <istream>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowbench::ctl {

/// A file system that is mounted.
struct Mount {
  std::string point;    ///< where it is mounted
  std::string type;     ///< "nfs4", "fuse.sshfs", "tmpfs"
  std::string source;   ///< "server:/export", "/dev/sda1"
  std::string options;  ///< as the system lists them: "rw,relatime,vers=4.1"

  bool operator==(const Mount&) const = default;

  /// Whether other machines may have it, too, as far as its type and source tell: "nfs4",
  /// "server:/export", "//server/share", and all that programs show by FUSE.
  [[nodiscard]] bool isShare() const;

  /// Whether an option is among them, as a word of its own: "lookupcache=pos".
  [[nodiscard]] bool has(const std::string& option) const;
};

/// All of a list in the form of /proc/self/mounts; lines that are no mount are left out.
[[nodiscard]] std::vector<Mount> mountsIn(std::istream& list);

/// Of this machine; none where the system has no such list.
[[nodiscard]] std::vector<Mount> mountsHere();

/// Without file systems of memory and of the kernel. At most 32.
///
/// @param first  stands in front, whatever it is: the one that matters most; nothing: none does
[[nodiscard]] std::vector<Mount> disksAndShares(std::span<const Mount> mounts,
                                                const std::optional<Mount>& first = std::nullopt);

/// The mount on which a path lies, which is absolute and free of links.
[[nodiscard]] std::optional<Mount> mountUnder(std::span<const Mount> mounts,
                                              const std::string& path);

/// The mount of a folder; nothing where the system does not tell.
[[nodiscard]] std::optional<Mount> mountOf(const std::string& folder);

}  // namespace marrowbench::ctl

#endif
