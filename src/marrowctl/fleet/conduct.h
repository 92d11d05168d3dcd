#ifndef MARROWBENCH_MARROWCTL_FLEET_CONDUCT_H
#define MARROWBENCH_MARROWCTL_FLEET_CONDUCT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "marrowctl/fleet/publish.h"
#include "marrowctl/fleet/run_state.h"

namespace marrowbench::ctl {

struct ConductOptions {
  std::vector<std::string> files;  ///< a settings file for each phase
  ControlFolder folder;
  Wanted wanted;
  bool leftoversMayStay = false;
  bool waitsForMoment = true;
  std::optional<std::int64_t> timeoutSeconds;  ///< of each phase; nothing: none
};

/// Who hears of it while it goes on.
struct ConductListener {
  /// Makes the listener for the publishing of a phase.
  std::function<PublishListener(const PublishOptions& options)> publishing;
  std::function<void(const RunState& state)> looked;
  std::function<void(std::size_t phase)> phaseDone;  ///< from 1
};

/// How conducting came out.
struct ConductOutcome {
  int status = 0;                    ///< an ExitStatus, or 128 and the number of a signal
  std::string problem;               ///< in a few words; empty: none, or a signal
  std::vector<std::string> reasons;  ///< a sentence each
};

/// Publishes one phase of a run after the other, the next one as soon as every client has left its
/// marker for the last: all start each phase together, and no service is needed for it. Comes back
/// when the last one is complete, or when that can't be any more.
[[nodiscard]] ConductOutcome conduct(const ConductOptions& options,
                                     const ConductListener& listener);

}  // namespace marrowbench::ctl

#endif
