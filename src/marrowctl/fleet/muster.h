#ifndef MARROWBENCH_MARROWCTL_FLEET_MUSTER_H
#define MARROWBENCH_MARROWCTL_FLEET_MUSTER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "marrowctl/fleet/recipe.h"
#include "marrowctl/fleet/recipe_process.h"
#include "marrowctl/fleet/roll_call.h"

namespace marrowbench::ctl {

struct MusterOptions {
  Engine engine = Engine::ssh;
  RecipeOptions recipe;
  Wanted wanted;
};

/// How it came out that clients were armed.
struct MusterOutcome {
  int status = 0;                     ///< an ExitStatus, or 128 and the number of a signal
  std::vector<std::string> problems;  ///< who is missing, or what could not be done
  std::size_t ready = 0;              ///< clients that are
};

/// How far it is.
struct MusterLook {
  std::size_t ready = 0;     ///< clients that are
  std::int64_t seconds = 0;  ///< since the engine was started
  bool engineRuns = false;
  std::string problem{};  ///< why the clients can't be seen now; empty: they can
};

/// Has an engine arm all clients, and waits until each of them has its ready file, or until it is
/// clear that some will not: the engine has failed, or has ended a while ago.
///
/// @param engine  runs on where it keeps the clients in its foreground
/// @param looked  told once a second how far it is
[[nodiscard]] MusterOutcome muster(const MusterOptions& options, RecipeProcess& engine,
                                   const std::function<void(const MusterLook&)>& looked);

}  // namespace marrowbench::ctl

#endif
