#ifndef MARROWBENCH_MARROWCTL_FLEET_MACHINE_FACTS_H
#define MARROWBENCH_MARROWCTL_FLEET_MACHINE_FACTS_H

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace marrowbench::ctl {

/// A file system that is mounted.
struct MountNote {
  std::string path;
  std::string type;     ///< "nfs4", "ext4"
  std::string source;   ///< "server:/export", "/dev/sda1"
  std::string options;  ///< as the system lists them

  bool operator==(const MountNote&) const = default;
};

/// What tells clients of a run apart when their figures differ.
struct MachineFacts {
  std::string kernel;  ///< name, release and processor: "Linux 6.1.0-13-amd64 x86_64"
  std::int64_t processors = 0;
  std::int64_t memoryBytes = 0;
  std::vector<MountNote> mounts;  ///< none where the system has no such list
};

/// Of this machine.
[[nodiscard]] MachineFacts factsOfThisMachine();

/// Disks and shares in a list in the form of /proc/self/mounts: file systems of memory and of the
/// kernel are left out. At most 32.
[[nodiscard]] std::vector<MountNote> mountsIn(std::istream& list);

}  // namespace marrowbench::ctl

#endif
