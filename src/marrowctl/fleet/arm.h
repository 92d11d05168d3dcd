#ifndef MARROWBENCH_MARROWCTL_FLEET_ARM_H
#define MARROWBENCH_MARROWCTL_FLEET_ARM_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "marrowctl/fleet/control_folder.h"

namespace marrowbench::ctl {

struct ArmOptions {
  ControlFolder folder;
  std::string program;                        ///< marrowbench: a path, or a name found in PATH
  std::string version;                        ///< of marrowctl
  std::optional<std::int64_t> giveUpSeconds;  ///< of waiting for a settings file; nothing: never
};

/// Who hears of it while it goes on.
struct ArmListener {
  /// What a person should know: each without a line feed.
  std::function<void(const std::string& message)> say;
  /// What the program prints, piece by piece.
  std::function<void(std::string_view text)> printed;
  /// The client waits, and its ready file is its own.
  std::function<void(const std::string& host, const std::string& settings)> armed;
};

/// How arming came out.
struct ArmOutcome {
  int status = 0;      ///< of the program; 128 and the number of a signal; or an ExitStatus
  std::string reason;  ///< why it did not go on; empty: the program ended by itself
};

/// Makes this machine a client of a run: leaves a ready file in the control folder, starts the
/// program at once on the settings file that is to come there, keeps the ready file fresh and the
/// share's client from remembering that there is no such file, and tells how it ended.
///
/// Ends when the program does, on SIGINT, SIGTERM and SIGHUP, and when it has waited for too long;
/// no process is left behind.
[[nodiscard]] ArmOutcome arm(const ArmOptions& options, const ArmListener& listener);

}  // namespace marrowbench::ctl

#endif
