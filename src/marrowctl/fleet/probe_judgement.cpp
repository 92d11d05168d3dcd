#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "marrowctl/fleet/probe.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

// The lock: a client looks every 250 ms for 10 s, and takes one over that is three hours old.
constexpr double kLockSeconds = 10;
constexpr double kLookSeconds = 0.25;
constexpr double kAbandonedSeconds = 10'800;
// Clients that look at the same moments write one row in each 250 ms.
constexpr int kMostInStep = static_cast<int>(kLockSeconds / kLookSeconds);
// What is seen so late makes a lock that is gone look held for most of a client's ten seconds.
constexpr double kLateLockSeconds = 5;
// A settings file that is seen later may be seen in another minute.
constexpr double kLateFileSeconds = 2;
constexpr double kMinute = 60;

std::string shownSeconds(double seconds) { return fmt::format("{:.3g} s", seconds); }

using Texts = std::vector<std::string>;

void addIf(bool isSo, Texts& texts, const std::string& text) {
  if (isSo) texts.push_back(text);
}

bool isNeverSeen(const Delays& delays) { return delays.seen.empty() && delays.unseen > 0; }

Texts againstAnyUse(const Probe& probe) {
  Texts reasons = probe.troubles;
  const bool hasHung = (probe.races && probe.races->hasHung) || (probe.rows && probe.rows->hasHung);
  addIf(hasHung, reasons, "the share does not answer any more");
  if (probe.second && !probe.asked.isQuick) {
    const bool isBlind =
        isNeverSeen(probe.second->newFile) && isNeverSeen(probe.second->newFileListed);
    addIf(isBlind, reasons,
          fmt::format("another client does not see new files within {}",
                      shownSeconds(probe.second->limitSeconds)));
  }
  return reasons;
}

void judgeRaces(const CreateRaces& races, Texts& reasons) {
  addIf(races.severalWinners > 0, reasons,
        fmt::format("an exclusive create had several winners in {} of {}: several clients would "
                    "hold the lock at once",
                    races.severalWinners, shownCount(races.rounds, "round")));
  addIf(races.noWinner > 0, reasons,
        fmt::format("an exclusive create had no winner in {} of {}", races.noWinner,
                    shownCount(races.rounds, "round")));
  for (const auto& [text, count] : races.otherAnswers) {
    reasons.push_back(
        fmt::format("who lost an exclusive create was told \"{}\" {}, not \"File exists\": a "
                    "client gives its row up then",
                    text, shownCount(count, "time")));
  }
}

void judgeRows(const RowTest& rows, Texts& reasons) {
  const int lost = rows.told - rows.kept;
  addIf(lost > 0, reasons,
        fmt::format("{} of {} that were told to be written are not in the table", lost,
                    shownCount(rows.told, "row")));
  addIf(
      rows.headers > 1, reasons,
      fmt::format("the table has {} headers: clients did not see each other's file", rows.headers));
  addIf(rows.strange > 0, reasons,
        fmt::format("the table has {} that is no row, or a row twice",
                    shownCount(rows.strange, "line")));
  addIf(rows.locked > 0, reasons,
        fmt::format("{} of {} waited for the lock in vain", rows.locked,
                    shownCount(rows.clients, "client")));
  addIf(rows.failed > 0, reasons,
        fmt::format("{} could not be written", shownCount(rows.failed, "row")));
  addIf(rows.leavesLock, reasons, "a lock stays behind: it can't be deleted");
}

void judgeDelays(const SecondMount& second, Texts& reasons) {
  const std::optional<double> removed = second.removedFile.longest();
  if (!removed) {
    reasons.push_back(fmt::format("another client does not see within {} that a lock is gone",
                                  shownSeconds(second.limitSeconds)));
  } else if (*removed >= kLateLockSeconds) {
    reasons.push_back(
        fmt::format("another client sees {} late that a lock is gone: it waits for 10 s, and "
                    "loses its row",
                    shownSeconds(*removed)));
  }
}

Texts againstOneTable(const Probe& probe) {
  Texts reasons;
  if (probe.races) judgeRaces(*probe.races, reasons);
  if (probe.rows) judgeRows(*probe.rows, reasons);
  // No fault of the share, but nothing shows that one table is safe either.
  addIf(!probe.rows, reasons,
        "whether rows are kept could not be tried: no processes could be started");
  if (probe.second) judgeDelays(*probe.second, reasons);
  if (probe.times) {
    const bool looksOld = probe.times->mostAheadSeconds < -kAbandonedSeconds;
    addIf(looksOld, reasons,
          fmt::format("files are {} old when they are made: every lock looks left behind, and "
                      "would be taken over",
                      shownDuration(std::llround(-probe.times->mostAheadSeconds))));
  }
  return reasons;
}

void noteDelays(const SecondMount& second, Texts& notes) {
  const double limit = second.limitSeconds;
  const double bare = second.newFileLookedFor.longest().value_or(limit);
  const double listed = second.newFileListed.longest().value_or(limit);
  if (bare < kLateFileSeconds) return;
  notes.push_back(fmt::format(
      "a client that has looked for a file in vain sees it {}{} after it was made{}",
      second.newFileLookedFor.longest() ? "" : "more than ", shownSeconds(bare),
      listed < kLateFileSeconds ? "; \"marrowctl fleet arm\" lists the folder and sees it at once"
                                : ""));
  addIf(std::min(bare, listed) >= kMinute, notes,
        "clients that wait for a settings file may start in different minutes");
}

void noteSight(const Probe& probe, Texts& notes) {
  if (probe.seesAnotherClient()) return;
  addIf(probe.isOneMount, notes,
        "both are one mount to this system: mount it again with nosharecache (NFS) or nosharesock "
        "(SMB)");
  notes.push_back(
      std::string("seen through one mount of one machine: what other clients see, and when, it "
                  "can't tell") +
      (probe.isOneMount ? "" : "; name a second mount of the share for that"));
}

Texts notesOn(const Probe& probe) {
  Texts notes;
  noteSight(probe, notes);
  addIf(!probe.races, notes, "no processes could be started to race for a file");
  if (probe.second) noteDelays(*probe.second, notes);
  addIf(probe.preallocationRefusal.has_value(), notes,
        "tests with PreAllocate fail: " + probe.preallocationRefusal.value_or(""));
  addIf(!probe.isCaseSensitive, notes,
        "names that differ in the case of letters are one file: give hosts other names");
  if (!probe.times) {
    notes.emplace_back("the times of files can't be asked for");
  } else {
    constexpr double kFarOff = 1;
    const double nearest = probe.times->leastAheadSeconds > 0  ? probe.times->leastAheadSeconds
                           : probe.times->mostAheadSeconds < 0 ? -probe.times->mostAheadSeconds
                                                               : 0;
    addIf(nearest > kFarOff, notes,
          fmt::format("the share's clock is {} {} this machine's", shownSeconds(nearest),
                      probe.times->leastAheadSeconds > 0 ? "ahead of" : "behind"));
  }
  return notes;
}

}  // namespace

ProbeJudgement judge(const Probe& probe) {
  ProbeJudgement judgement;
  judgement.notes = notesOn(probe);
  judgement.options = helpfulOptions(probe);
  judgement.reasons = againstAnyUse(probe);
  if (!judgement.reasons.empty()) {
    judgement.verdict = ProbeVerdict::notUsable;
    return judgement;
  }
  judgement.reasons = againstOneTable(probe);
  if (!judgement.reasons.empty()) {
    judgement.verdict = ProbeVerdict::ownTables;
    return judgement;
  }
  // Processes of one machine race within its kernel: which of two clients a server lets win, they
  // can't show.
  judgement.isOfOneMount =
      !probe.seesAnotherClient() && probe.mount.has_value() && probe.mount->isShare();
  if (probe.secondsPerRow) {
    const double inTenSeconds = kLockSeconds / std::max(*probe.secondsPerRow, 1e-6);
    judgement.clients = std::max(1, static_cast<int>(std::min<double>(inTenSeconds, kMostInStep)));
  }
  return judgement;
}

}  // namespace marrowbench::ctl
