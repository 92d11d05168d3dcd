#ifndef MARROWBENCH_MARROWCTL_FLEET_PUBLISH_H
#define MARROWBENCH_MARROWCTL_FLEET_PUBLISH_H

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "marrowctl/check/finding.h"
#include "marrowctl/fleet/leftovers.h"
#include "marrowctl/fleet/publication.h"
#include "marrowctl/fleet/roll_call.h"
#include "marrowctl/fleet/start_window.h"

namespace marrowbench::ctl {

struct PublishOptions {
  std::string file;  ///< the settings file as it lies somewhere; "-": the standard input
  ControlFolder folder;
  Wanted wanted;
  bool leftoversMayStay = false;
  bool isDryRun = false;  ///< everything is looked at, nothing is published
  bool waitsForMoment = true;
  bool isBeforeArming = false;  ///< of prepareToPublish(): nobody can be ready yet
  int phase = 1;
  bool hasNext = false;  ///< another phase follows
  /// Tables that earlier phases of this run write to: what stands in them is of this run.
  std::unordered_set<std::string> tablesOfRun{};
};

/// What was found out before a file is published.
struct Preparation {
  Publication publication;
  std::vector<Finding> findings;  ///< of check, at the place of the file
  Roll roll;
  Leftovers leftovers;
  std::int64_t rounding = 0;  ///< how much the share's times may be rounded down, milliseconds
  std::int64_t rollMs = 0;    ///< that it took to read the ready files
  /// Why it is not to be published, one sentence each; empty: it may be.
  std::vector<std::string> refusals;
  int status = 0;  ///< an ExitStatus that goes with them
};

/// Who hears of it while it goes on.
struct PublishListener {
  std::function<void(const Preparation& preparation)> prepared;
  /// The moment is waited for.
  std::function<void(std::int64_t seconds, const StartWindow& window)> waiting;
  std::function<void(std::int64_t secondsToStart, const StartWindow& window)> published;
};

/// How publishing came out.
struct PublishOutcome {
  int status = 0;                     ///< an ExitStatus, or 128 and the number of a signal
  std::vector<std::string> refusals;  ///< why it was not published; empty: it was, or a dry run
  std::int64_t publishedMs = 0;       ///< by the share's clock
  StartWindow window;
  std::vector<std::string> tables{};  ///< that clients write to
};

/// Puts a settings file, and what it chains to, into the folder of a run, where armed clients find
/// it, at the second that gives them the most time to see it before it is too late to start with
/// the others. Refuses where not all could start together, or what they leave could not be told
/// from what is there.
[[nodiscard]] PublishOutcome publish(const PublishOptions& options,
                                     const PublishListener& listener);

/// What publish() looks at before, without the waiting.
[[nodiscard]] Preparation prepareToPublish(const PublishOptions& options);

}  // namespace marrowbench::ctl

#endif
