#ifndef MARROWBENCH_MARROWCTL_FLEET_FOLDER_NAMES_H
#define MARROWBENCH_MARROWCTL_FLEET_FOLDER_NAMES_H

#include <functional>
#include <string>

namespace marrowbench::ctl {

/// Calls `take` with the name of each file in a folder, in no order.
/// @return errno of what failed; those before were taken
[[nodiscard]] int forEachName(const std::string& folder,
                              const std::function<void(const std::string& name)>& take);

}  // namespace marrowbench::ctl

#endif
