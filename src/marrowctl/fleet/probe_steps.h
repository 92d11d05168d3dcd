#ifndef MARROWBENCH_MARROWCTL_FLEET_PROBE_STEPS_H
#define MARROWBENCH_MARROWCTL_FLEET_PROBE_STEPS_H

#include <string>
#include <string_view>

#include "marrowctl/fleet/probe.h"

/// What a probe consists of. Each step leaves its files in the probe's folder, under names of its
/// own, and ends early when the program is interrupted.
namespace marrowbench::ctl {

/// The probe's own folder.
struct ProbeFolder {
  std::string path;
  std::string second;  ///< through the second mount; empty: there is none
  bool isQuick = false;

  /// Of a client: every other one uses the second mount.
  [[nodiscard]] const std::string& pathOf(std::size_t client) const {
    return client % 2 == 1 && !second.empty() ? second : path;
  }
};

/// Files written, read, appended to, renamed and deleted; space reserved; the case of names.
void tryCalls(const ProbeFolder& folder, Probe& probe);

/// The times that the share gives files, against this machine's clock. Nothing when it gives none.
[[nodiscard]] std::optional<FileTimes> measureTimes(const ProbeFolder& folder);

/// Nothing where the system starts no processes.
[[nodiscard]] std::optional<CreateRaces> raceToCreate(const ProbeFolder& folder);

/// Rows of one client, and then of several at once; none of what the system starts too few
/// processes for.
void appendRows(const ProbeFolder& folder, Probe& probe);

/// What comes of the rows of a client that had the table to itself: how long one takes, or that the
/// share is unfit. How many there are is no matter: a slow share has time for few.
///
/// @param seconds  that they took
void judgeRowsAlone(const RowTest& alone, double seconds, Probe& probe);

[[nodiscard]] SecondMount watchSecondMount(const ProbeFolder& folder);

/// Waits until the second mount shows the file or folder. @return false: not within the seconds
[[nodiscard]] bool isShownWithin(const std::string& path, double seconds);

/// Writes a file anew. @return errno of what failed
[[nodiscard]] int writeProbeFile(const std::string& path, std::string_view text,
                                 bool appends = false);

/// All of a file; nothing when it can't be read, errno tells why.
[[nodiscard]] std::optional<std::string> readProbeFile(const std::string& path);

}  // namespace marrowbench::ctl

#endif
