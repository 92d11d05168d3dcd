#include "marrowctl/fleet/conduct.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <unordered_set>
#include <utility>

#include "marrowctl/fleet/pace.h"
#include "marrowctl/fleet/run_watch.h"
#include "marrowctl/plan/done_markers.h"
#include "marrowctl/support/exit_status.h"
#include "marrowctl/support/interruption.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int32_t kTickMs = 100;
constexpr std::int64_t kMsOfSecond = 1000;
constexpr int kSignalBase = 128;
// What was written last may reach this machine late, the marker of a client that has ended, say.
constexpr int kLastLooks = 10;

// The last file of a phase that is there: behind it clients wait for the next phase.
const PlannedFile& lastOf(const std::vector<PlannedFile>& files) {
  const auto last = std::find_if(files.rbegin(), files.rend(),
                                 [](const PlannedFile& file) { return file.exists; });
  return last == files.rend() ? files.back() : *last;
}

ConductOutcome notPublished(PublishOutcome outcome) {
  const char* const problem =
      outcome.refusals.empty() ? "not published: ended by a signal" : "not published";
  return {outcome.status, problem, std::move(outcome.refusals)};
}

class Conductor {
 public:
  Conductor(const ConductOptions& conductOptions, const ConductListener& conductListener)
      : options(conductOptions), listener(conductListener), watch(options.folder, options.wanted) {}

  ConductOutcome run() {
    if (PublishOutcome refusal = prepareAll(); refusal.status != done)
      return notPublished(std::move(refusal));
    for (int phase = 1; phase <= phases(); ++phase) {
      // What the phases before it have written is there now.
      const PublishOptions each = optionsOf(phase, options.leftoversMayStay || phase > 1);
      PublishOutcome outcome = publish(each, listener.publishing(each));
      if (outcome.status != done) return notFollowed(phase, notPublished(std::move(outcome)));
      writtenTables.insert(outcome.tables.begin(), outcome.tables.end());
      if (ConductOutcome end = waitForEnd(phase); end.status != done) return end;
      listener.phaseDone(static_cast<std::size_t>(phase));
    }
    return {};
  }

 private:
  [[nodiscard]] int phases() const { return static_cast<int>(options.files.size()); }

  [[nodiscard]] PublishOptions optionsOf(int phase, bool leftoversMayStay) const {
    PublishOptions each;
    each.file = options.files[static_cast<std::size_t>(phase) - 1];
    each.folder = options.folder;
    each.wanted = options.wanted;
    each.leftoversMayStay = leftoversMayStay;
    each.waitsForMoment = options.waitsForMoment;
    each.phase = phase;
    each.hasNext = phase < phases();
    each.tablesOfRun = writtenTables;
    return each;
  }

  // Before anybody has started, what would stop a later phase is told, too.
  [[nodiscard]] PublishOutcome prepareAll() const {
    PublishOutcome refusal;
    std::map<std::string, int> phaseOfPlace;
    for (int phase = 1; phase <= phases(); ++phase) {
      const PublishOptions each = optionsOf(phase, options.leftoversMayStay);
      Preparation prepared = prepareToPublish(each);
      refuseUnseenEnd(phase, prepared);
      refuseSharedPlaces(phase, prepared, phaseOfPlace);
      // What is wrong with this phase; one that is published tells of itself then.
      if (!prepared.refusals.empty()) listener.publishing(each).prepared(prepared);
      for (std::string& sentence : prepared.refusals) {
        const auto& told = refusal.refusals;
        if (std::find(told.begin(), told.end(), sentence) == told.end())
          refusal.refusals.push_back(std::move(sentence));
      }
      refusal.status = std::max(refusal.status, prepared.status);
    }
    return refusal;
  }

  static void refuse(Preparation& prepared, std::string sentence) {
    prepared.refusals.push_back(std::move(sentence));
    prepared.status = std::max<int>(prepared.status, answerIsNo);
  }

  void refuseUnseenEnd(int phase, Preparation& prepared) const {
    const auto& files = prepared.publication.plan.files;
    if (!prepared.publication.problem.empty() || files.empty() || leavesMarker(lastOf(files)))
      return;
    refuse(prepared, fmt::format("phase {}, {}: no line asks for the done marker (\"true\" in the "
                                 "last field): nobody could see the end of this phase",
                                 phase, options.files[static_cast<std::size_t>(phase) - 1]));
  }

  static void refuseSharedPlaces(int phase, Preparation& prepared,
                                 std::map<std::string, int>& phaseOfPlace) {
    for (const auto& [place, text] : prepared.publication.texts) {
      const auto [known, isNew] = phaseOfPlace.emplace(place, phase);
      if (!isNew) {
        refuse(prepared, fmt::format("phases {} and {} both bring {}: give the files that they "
                                     "chain to different names",
                                     known->second, phase, place));
      }
    }
  }

  ConductOutcome waitForEnd(int phase) {
    // Not while a phase is published, which takes note of signals itself.
    const Interruption interruption;
    std::int64_t start = 0;
    nowMs(start);
    SparingPace pace;
    int looksLeft = kLastLooks;
    for (;;) {
      const bool isLastLook = isTimeUp(start);
      if (isLastLook || looksLeft < kLastLooks) {
        watch.lookAtAll();
      } else {
        watch.look();
      }
      const RunState& state = watch.state();
      listener.looked(state);
      if (!watch.problem().empty()) return notFollowed(phase + 1, {notDone, watch.problem(), {}});
      const bool isSeen = state.trouble.empty();
      if (isSeen && isOverWith(phase, state)) return {};
      if (isSeen) looksLeft = mayEnd(phase, state) ? kLastLooks : looksLeft - 1;
      if (looksLeft == 0 || isLastLook) return stopped(phase, state);
      if (const int signal = sleepFor(pace.pauseMs(), interruption); signal != 0)
        return notFollowed(phase + 1, {kSignalBase + signal, "ended by a signal", {}});
    }
  }

  // A phase is over with its last marker, the run with its last row.
  [[nodiscard]] bool isOverWith(int phase, const RunState& state) const {
    return hasEnded(phase, state) && (phase < phases() || isComplete(state));
  }

  // False: somebody is missing, or only rows are.
  [[nodiscard]] bool mayEnd(int phase, const RunState& state) const {
    return state.count(ClientState::missing) == 0 && !hasEnded(phase, state);
  }

  // Every marker is there, once the watch knows that the phase is published.
  [[nodiscard]] bool hasEnded(int phase, const RunState& state) const {
    const auto all = static_cast<std::int64_t>(state.clients.size());
    return state.publishedMs && state.awaited != options.folder.settings(phase) &&
           state.count(ClientState::done) == all;
  }

  [[nodiscard]] bool isTimeUp(std::int64_t start) const {
    std::int64_t now = 0;
    nowMs(now);
    return options.timeoutSeconds && now - start >= *options.timeoutSeconds * kMsOfSecond;
  }

  // What becomes of the clients when this phase does not follow.
  [[nodiscard]] ConductOutcome notFollowed(int phase, ConductOutcome outcome) const {
    if (phase > 1 && phase <= phases()) {
      outcome.reasons.push_back(fmt::format(
          "phase {} is not published: the clients wait for {} until they are ended, or give up",
          phase, options.folder.settings(phase)));
    } else if (phase > phases()) {
      outcome.reasons.emplace_back("the clients go on without this program");
    }
    return outcome;
  }

  [[nodiscard]] ConductOutcome stopped(int phase, const RunState& state) const {
    RunState here = state;
    here.awaited.clear();
    std::vector<std::string> reasons = lacks(here);
    if (phase < phases()) {
      reasons.push_back(fmt::format(
          "phase {} would start without them, and is not published: the other clients wait for {} "
          "until they are ended, or give up",
          phase + 1, options.folder.settings(phase + 1)));
    }
    return {answerIsNo, fmt::format("phase {} is not complete", phase), std::move(reasons)};
  }

  // Returns the signal that ended it.
  [[nodiscard]] static int sleepFor(std::int64_t milliseconds, const Interruption& interruption) {
    for (std::int64_t slept = 0; slept < milliseconds && interruption.signal() == 0;
         slept += kTickMs)
      sleepMs(kTickMs);
    return interruption.signal();
  }

  const ConductOptions& options;
  const ConductListener& listener;
  RunWatch watch;
  std::unordered_set<std::string> writtenTables;  // by the phases that are published
};

}  // namespace

ConductOutcome conduct(const ConductOptions& options, const ConductListener& listener) {
  return Conductor(options, listener).run();
}

}  // namespace marrowbench::ctl
