#ifndef MARROWBENCH_MARROWCTL_FLEET_ROLL_CALL_H
#define MARROWBENCH_MARROWCTL_FLEET_ROLL_CALL_H

#include <cstdint>
#include <string>
#include <vector>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/fleet/finished_note.h"
#include "marrowctl/fleet/ready_note.h"
#include "marrowctl/fleet/share_clock.h"
#include "marrowctl/fleet/start_window.h"

namespace marrowbench::ctl {

/// A client by its ready file.
struct PresentClient {
  std::string host;
  std::int64_t ageMs = 0;  ///< since its file was touched, by the share's clock
  ReadyNote note;
};

/// Who has a ready file, or had one. All lists are in the order of their names.
struct Roll {
  std::vector<PresentClient> ready;
  std::vector<PresentClient> gone;    ///< the file was not touched for kGoneSeconds
  std::vector<std::string> starting;  ///< the file does not tell yet that the program runs
  std::vector<FinishedNote> ended;    ///< were armed and are no more
  [[nodiscard]] std::vector<std::string> readyHosts() const;
};

/// Reads the ready files of a run. @return errno of what failed; 0 also when there is no folder yet
[[nodiscard]] int callRoll(const ControlFolder& folder, const ShareTime& share, Roll& roll);

/// Who is wanted.
struct Wanted {
  std::vector<std::string> hosts;  ///< as the program calls them; empty: not known
  std::int64_t clients = 0;        ///< how many; 0: as many as there are hosts
};

/// Why the run can't be started with these clients, one sentence each; empty: it can.
[[nodiscard]] std::vector<std::string> absences(const Roll& roll, const Wanted& wanted);

/// Clients that are ready though nobody asked for them; none where no names are wanted.
[[nodiscard]] std::vector<std::string> uninvited(const Roll& roll, const Wanted& wanted);

/// The span of their clocks. @pre at least one is ready
[[nodiscard]] ClockSpan clocksOf(const Roll& roll);

/// Clocks that differ by more than a second: who has them, one sentence each.
///
/// @param rounding  how much the share's times may be rounded down, in milliseconds
[[nodiscard]] std::vector<std::string> wrongClocks(const Roll& roll, std::int64_t rounding);

}  // namespace marrowbench::ctl

#endif
