#ifndef MARROWBENCH_MARROWCTL_FLEET_PROBE_H
#define MARROWBENCH_MARROWCTL_FLEET_PROBE_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/fleet/mounts.h"

namespace marrowbench::ctl {

/// What is to be found out of a share.
struct ProbeOptions {
  std::string folder;
  std::string second;    ///< the same folder through another mount; empty: there is none
  bool isQuick = false;  ///< a few seconds: less often, and late changes are not waited for
  /// Told what is looked at next, and may be empty.
  std::function<void(std::string_view)> progress;
};

/// Rounds in which several processes create one file exclusively at the same moment.
struct CreateRaces {
  int processes = 0;
  int rounds = 0;
  int oneWinner = 0, noWinner = 0, severalWinners = 0;
  /// What losers were told instead of "File exists", and how often.
  std::map<std::string, int> otherAnswers;
  bool hasHung = false;  ///< a round did not end
};

/// Rows that clients append to one table under its lock, by the program's own code.
struct RowTest {
  int clients = 0;
  int told = 0;     ///< rows of which their client believes that they are written
  int locked = 0;   ///< rows given up since the lock could not be had
  int failed = 0;   ///< rows that could not be written, or whose lock was taken over
  int kept = 0;     ///< of those told the ones that the table holds, whole and once
  int headers = 0;  ///< lines that are the header; 1 is right
  int strange = 0;  ///< lines that are no row, a row twice, or one that was given up
  bool leavesLock = false;
  bool hasHung = false;
};

/// How long until the second mount shows what was changed through the first, for each of a few
/// files, in seconds.
struct Delays {
  std::vector<double> seen;
  int unseen = 0;  ///< files whose change was not seen within the time

  [[nodiscard]] std::optional<double> median() const;
  /// Nothing when one was not seen at all.
  [[nodiscard]] std::optional<double> longest() const;
};

/// What another client sees, and when.
struct SecondMount {
  double limitSeconds = 0;  ///< for how long was looked
  Delays newFile;           ///< a file of which it did not know
  Delays newFileLookedFor;  ///< one for which it has looked in vain, as for a settings file
  Delays newFileListed;     ///< the same while it lists the folder every second, as "arm" does
  Delays removedFile;       ///< one that it has just seen, as a lock
  Delays changedFile;       ///< one that grows, as a table
  Delays replacedFile;      ///< one that another is renamed over
};

/// What one client finds with ordinary calls.
struct FileTimes {
  std::int64_t granularityNs = 1;  ///< all times are multiples of it
  /// By how much the share's clock is ahead of this machine's: it lies between the two.
  double leastAheadSeconds = 0, mostAheadSeconds = 0;
};

struct Probe {
  ProbeOptions asked;
  std::optional<Mount> mount, secondMountPoint;
  bool isOneMount = false;  ///< both folders are one to the system, which has one memory for both
  double seconds = 0;       ///< that it took
  /// Ordinary calls that failed or did something else: "rename over a file: ...".
  std::vector<std::string> troubles;
  std::optional<std::string> preallocationRefusal;  ///< why; nothing: the share reserves space
  std::optional<FileTimes> times;
  bool isCaseSensitive = true;
  std::optional<CreateRaces> races;
  std::optional<double> secondsPerRow;  ///< of a client that has the table to itself
  std::optional<RowTest> rows;
  std::optional<SecondMount> second;

  /// Whether what it found is also what another client would: it had a mount with a memory of its
  /// own for that.
  [[nodiscard]] bool seesAnotherClient() const { return !asked.second.empty() && !isOneMount; }
};

struct ProbeOutcome {
  Probe probe;
  std::string problem;  ///< why nothing can be said, with the folder in front; empty: it can
  std::string left;     ///< the probe's own folder where it could not be removed
};

/// Tries a share out, in a folder of its own that is removed at the end; several may do so at once.
/// A signal that ends the program does so when the folder is removed.
[[nodiscard]] ProbeOutcome probeShare(const ProbeOptions& options);

enum class ProbeVerdict {
  oneTable,   ///< clients may share a table
  ownTables,  ///< each client needs a table of its own: [host] in the results path
  notUsable,  ///< not even for that
};

/// What the share is good for.
struct ProbeJudgement {
  ProbeVerdict verdict = ProbeVerdict::oneTable;
  std::vector<std::string> reasons;  ///< against one table; of the verdict's kind
  std::vector<std::string> notes;    ///< what a person should know besides
  std::vector<std::string> options;  ///< of the mount, that help, each with what it does
  std::optional<int> clients;        ///< one table bears that many that finish in step
  bool isOfOneMount = false;         ///< of a share that no other client was seen to use
};

[[nodiscard]] ProbeJudgement judge(const Probe& probe);

/// Mount options that would mend what was found, each with its reason.
[[nodiscard]] std::vector<std::string> helpfulOptions(const Probe& probe);

}  // namespace marrowbench::ctl

#endif
