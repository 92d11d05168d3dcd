#ifndef MARROWBENCH_MARROWCTL_MAIN_WATCH_RUN_H
#define MARROWBENCH_MARROWCTL_MAIN_WATCH_RUN_H

#include <cstdint>
#include <cstdio>
#include <optional>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/fleet/roll_call.h"
#include "marrowctl/main/outcome.h"

namespace marrowbench::ctl {

/// The options of "marrowctl fleet watch".
struct WatchCommand {
  ControlFolder folder;
  Wanted wanted;
  std::optional<std::int64_t> timeoutSeconds;  ///< nothing: there is no limit
  bool isJson = false;
};

/// Looks on until a run is complete, nothing more will come of it or the time is up.
///
/// @param output  where it is shown how far the run is
[[nodiscard]] Outcome watchRun(const WatchCommand& command, std::FILE* output);

}  // namespace marrowbench::ctl

#endif
