#ifndef MARROWBENCH_MARROWCTL_MAIN_WATCH_DISPLAY_H
#define MARROWBENCH_MARROWCTL_MAIN_WATCH_DISPLAY_H

#include <cstdio>
#include <optional>
#include <string>

#include "marrowctl/fleet/pace.h"
#include "marrowctl/fleet/run_state.h"
#include "marrowctl/main/live_screen.h"

namespace marrowbench::ctl {

/// Shows how far a run is, as the output can: on a terminal a table that is drawn anew in its
/// place, else a line now and then.
class WatchDisplay {
 public:
  explicit WatchDisplay(std::FILE* file);

  /// @param isLast  nothing follows: it is shown in any case
  void show(const RunState& state, bool isLast);

 private:
  std::FILE* out;
  std::optional<LiveScreen> screen;
  Pace pace;
  std::string lastChange;
};

}  // namespace marrowbench::ctl

#endif
