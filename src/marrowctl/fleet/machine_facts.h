#ifndef MARROWBENCH_MARROWCTL_FLEET_MACHINE_FACTS_H
#define MARROWBENCH_MARROWCTL_FLEET_MACHINE_FACTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "marrowctl/fleet/mounts.h"

namespace marrowbench::ctl {

/// What tells clients of a run apart when their figures differ.
struct MachineFacts {
  std::string kernel;  ///< name, release and processor: "Linux 6.1.0-13-amd64 x86_64"
  std::int64_t processors = 0;
  std::int64_t memoryBytes = 0;
  std::vector<Mount> mounts;  ///< the share, then disks and other shares; none where the system
                              ///< has no such list
};

/// Of this machine, for runs on a share, of which a folder is named.
[[nodiscard]] MachineFacts factsOfThisMachine(const std::string& folder);

}  // namespace marrowbench::ctl

#endif
