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
  std::vector<Mount> mounts;  ///< disks and shares; none where the system has no such list
};

/// Of this machine.
[[nodiscard]] MachineFacts factsOfThisMachine();

}  // namespace marrowbench::ctl

#endif
