#include "marrowctl/fleet/publish.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <utility>

#include "marrowctl/check/check.h"
#include "marrowctl/fleet/drafts.h"
#include "marrowctl/fleet/published_note.h"
#include "marrowctl/fleet/share_clock.h"
#include "marrowctl/report/completeness.h"
#include "marrowctl/report/output.h"
#include "marrowctl/support/exit_status.h"
#include "marrowctl/support/interruption.h"
#include "support/clock.h"
#include "support/file_status.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int32_t kTickMs = 100;
constexpr std::int64_t kMsOfSecond = 1000;
constexpr int kSignalBase = 128;

// The clock of the share, or why it can't be read.
std::string readClock(const ControlFolder& folder, ClockReading& reading) {
  if (std::string problem = problemOfShare(folder); !problem.empty()) return problem;
  const int failure = readShareClock(folder.control, reading);
  return failure == 0 ? "" : folder.control + ": " + std::strerror(failure);
}

// Whom the plan is made for: those that are wanted, and those that will start as well.
std::vector<std::string> hostsOf(const Roll& roll, const Wanted& wanted) {
  std::vector<std::string> hosts = wanted.hosts;
  const std::vector<std::string> more =
      wanted.hosts.empty() ? roll.readyHosts() : uninvited(roll, wanted);
  hosts.insert(hosts.end(), more.begin(), more.end());
  return hosts;
}

void addLeftovers(const Leftovers& leftovers, std::vector<std::string>& sentences) {
  const bool isNameTaken = !sentences.empty();
  const auto add = [&sentences](const char* what, const std::vector<std::string>& paths) {
    if (!paths.empty()) {
      sentences.push_back(
          fmt::format("of an earlier run there is still {}: {}", what, shownNames(paths, 5)));
    }
  };
  add("a done marker, by which the client would seem to have ended", leftovers.markers);
  add("a table, to which the rows would be added", leftovers.tables);
  add("a lock, for which clients would wait", leftovers.locks);
  // Where a settings file is in the way --again would not help.
  if (!sentences.empty() && !isNameTaken) {
    sentences.emplace_back(
        "delete what is left, or let it stay with \"marrowctl fleet publish --again\"");
  }
}

void addPlaces(const Publication& publication, std::vector<std::string>& sentences) {
  for (const auto& [place, text] : publication.texts) {
    if (fileStatus(place.c_str()))
      sentences.push_back(place + " is there already: a run needs a name of its own");
  }
}

void refuse(Preparation& preparation, int status, std::vector<std::string> sentences) {
  if (sentences.empty()) return;
  auto& all = preparation.refusals;
  all.insert(all.end(), std::make_move_iterator(sentences.begin()),
             std::make_move_iterator(sentences.end()));
  preparation.status = std::max(preparation.status, status);
}

void checkAtItsPlace(const PublishOptions& options, Preparation& preparation) {
  const Plan& plan = preparation.publication.plan;
  preparation.findings = check(plan, totalsOf(plan), Allowance::allButErrors);
  // The next phase comes later, and clients are to wait for it.
  const std::string next = options.hasNext ? options.folder.settings(options.phase + 1) : "";
  for (const PlannedFile& file : plan.files) {
    if (next.empty() || file.chain != next) continue;
    std::erase_if(preparation.findings, [&file](const Finding& finding) {
      return finding.name == "chain-missing" && finding.file == file.path;
    });
  }
  const auto errors =
      std::count_if(preparation.findings.begin(), preparation.findings.end(),
                    [](const Finding& finding) { return finding.severity == Severity::error; });
  if (errors > 0)
    refuse(preparation, notDone, {"check finds errors in the settings file, at its new place"});
}

class Publisher {
 public:
  Publisher(const PublishOptions& publishOptions, const PublishListener& publishListener)
      : options(publishOptions), listener(publishListener) {}

  PublishOutcome run() {
    const Preparation preparation = prepareToPublish(options);
    listener.prepared(preparation);
    if (!preparation.refusals.empty()) return {preparation.status, preparation.refusals, 0, {}};
    return carryOut(preparation);
  }

 private:
  PublishOutcome carryOut(const Preparation& preparation) {
    ClockReading reading;
    if (const std::string problem = readClock(options.folder, reading); !problem.empty())
      return {notDone, {problem}, 0, {}};
    const ShareTime share(reading);
    const ClockSpan clocks = clocksOf(preparation.roll);
    const std::int64_t moment =
        options.waitsForMoment ? bestMoment(share.nowMs(), clocks) : share.nowMs();
    const std::int64_t wait = (moment - share.nowMs() + kMsOfSecond - 1) / kMsOfSecond;
    if (options.waitsForMoment || options.isDryRun)
      listener.waiting(wait, windowFrom(moment, clocks));
    if (options.isDryRun) return {};
    Drafts drafts;
    if (const std::string problem = drafts.write(textsOf(preparation, clocks)); !problem.empty())
      return {notDone, {problem}, 0, {}};
    // Up to a minute passes: somebody may leave. Thousands are asked as early as that takes.
    waitUntil(moment - 2 * preparation.rollMs - kMsOfSecond, share);
    if (PublishOutcome refusal = refusalOf(preparation, share); refusal.status != done)
      return refusal;
    waitUntil(moment, share);
    if (const int signal = interruption.signal(); signal != 0)
      return {kSignalBase + signal, {}, 0, {}};
    PublishOutcome outcome = put(drafts, share, clocks);
    outcome.tables = tablesOf(preparation.publication.plan);
    return outcome;
  }

  // The settings files, and a note for those that watch.
  [[nodiscard]] std::map<std::string, std::string> textsOf(const Preparation& preparation,
                                                           const ClockSpan& clocks) const {
    PublishedNote note{options.folder.run,
                       options.phase,
                       isoTime(currentSeconds()),
                       preparation.roll.readyHosts(),
                       clocks,
                       {}};
    for (const std::string& table : preparation.leftovers.tables) {
      if (options.tablesOfRun.contains(table)) continue;
      std::int64_t bytes = 0;
      (void)fileStatus(table.c_str(), nullptr, &bytes);
      note.tables[options.folder.within(table)] = bytes;
    }
    std::map<std::string, std::string> texts = preparation.publication.texts;
    texts[options.folder.published(options.phase)] = textOf(note);
    return texts;
  }

  // Or until a signal comes.
  void waitUntil(std::int64_t moment, const ShareTime& share) const {
    while (share.nowMs() < moment && interruption.signal() == 0) sleepMs(kTickMs);
  }

  // What may have changed since it was prepared.
  [[nodiscard]] PublishOutcome refusalOf(const Preparation& preparation,
                                         const ShareTime& share) const {
    std::vector<std::string> taken;
    addPlaces(preparation.publication, taken);
    if (!taken.empty()) return {answerIsNo, taken, 0, {}};
    if (!options.waitsForMoment || interruption.signal() != 0) return {};
    Roll roll;
    if (const int code = callRoll(options.folder, share, roll); code != 0)
      return {notDone, {options.folder.path() + ": " + std::strerror(code)}, 0, {}};
    const std::vector<std::string> missing = absences(roll, options.wanted);
    if (!missing.empty()) return {answerIsNo, missing, 0, {}};
    return {};
  }

  PublishOutcome put(Drafts& drafts, const ShareTime& share, const ClockSpan& clocks) const {
    if (const std::string problem = drafts.publish(options.folder.settings(options.phase));
        !problem.empty())
      return {notDone, {problem}, 0, {}};
    PublishOutcome outcome;
    outcome.publishedMs = share.nowMs();
    outcome.window = windowFrom(outcome.publishedMs, clocks);
    const std::int64_t toStart = outcome.window.startMs - outcome.publishedMs - clocks.slowestMs;
    listener.published((toStart + kMsOfSecond - 1) / kMsOfSecond, outcome.window);
    return outcome;
  }

  const PublishOptions& options;
  const PublishListener& listener;
  const Interruption interruption;
};

}  // namespace

Preparation prepareToPublish(const PublishOptions& options) {
  Preparation preparation;
  ClockReading reading;
  if (std::string problem = readClock(options.folder, reading); !problem.empty()) {
    refuse(preparation, notDone, {std::move(problem)});
    return preparation;
  }
  const ShareTime share(reading);
  const std::int64_t before = share.nowMs();
  preparation.rounding = roundingMs(reading);
  const int code = options.isBeforeArming ? 0 : callRoll(options.folder, share, preparation.roll);
  if (code != 0) {
    refuse(preparation, notDone, {options.folder.path() + ": " + std::strerror(code)});
    return preparation;
  }
  preparation.rollMs = share.nowMs() - before;
  preparation.publication =
      preparePublication({options.file, options.folder, options.phase, options.hasNext,
                          hostsOf(preparation.roll, options.wanted), options.wanted.clients});
  if (!preparation.publication.problem.empty()) {
    refuse(preparation, notDone, {preparation.publication.problem});
    return preparation;
  }
  checkAtItsPlace(options, preparation);
  std::vector<std::string> sentences;
  addPlaces(preparation.publication, sentences);
  preparation.leftovers = findLeftovers(preparation.publication.plan);
  if (!options.leftoversMayStay) addLeftovers(preparation.leftovers, sentences);
  refuse(preparation, answerIsNo, std::move(sentences));
  if (options.isBeforeArming) return preparation;
  refuse(preparation, answerIsNo, absences(preparation.roll, options.wanted));
  std::error_code unknown;
  if (const std::string path = options.folder.path(); !std::filesystem::exists(path, unknown))
    refuse(preparation, answerIsNo, {path + " does not exist: nobody was armed for such a run"});
  std::vector<std::string> clocks = wrongClocks(preparation.roll, preparation.rounding);
  if (!clocks.empty()) {
    clocks.emplace_back(
        "clients start by their own clocks: set them, as chrony or NTP do, and try "
        "again a minute later");
  }
  refuse(preparation, answerIsNo, std::move(clocks));
  return preparation;
}

PublishOutcome publish(const PublishOptions& options, const PublishListener& listener) {
  return Publisher(options, listener).run();
}

}  // namespace marrowbench::ctl
