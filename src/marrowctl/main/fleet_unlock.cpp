#include <fmt/format.h>

#include <sstream>
#include <string>

#include "marrowctl/fleet/unlock.h"
#include "marrowctl/main/fleet_options.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostNote = 1000;

// The lines of the note that are not empty.
std::string noteText(const std::string& note) {
  std::string text;
  std::istringstream lines(note.substr(0, kMostNote));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t begin = line.find_first_not_of(' ');
    if (begin == std::string::npos) continue;
    text += fmt::format("{:<6}{}\n", text.empty() ? "Note" : "", printable(line.substr(begin)));
  }
  return text;
}

std::string shownAge(std::int64_t seconds) {
  if (seconds < 0) return shownDuration(-seconds) + " in the future";
  return shownDuration(seconds);
}

std::string lockText(const FoundLock& lock) {
  return fmt::format("{:<6}{}\n{:<6}{}, by the share's clock\n{:<6}{}\n{}", "Lock",
                     printable(lock.path), "Age", shownAge(lock.ageSeconds), "Size",
                     shownSize(lock.bytes), noteText(lock.note));
}

std::string resultText(const UnlockOutcome& outcome, const UnlockOptions& options) {
  switch (outcome.result) {
    case UnlockResult::noLock:
      return "No lock: " + printable(outcome.lock.path) + " is not there.\n";
    case UnlockResult::removed: return lockText(outcome.lock) + "Removed.\n";
    case UnlockResult::shown:
      return lockText(outcome.lock) +
             "It stays. When no client is appending a row: --age 10m --yes removes one that is "
             "older "
             "than ten minutes.\n";
    case UnlockResult::tooYoung:
      return lockText(outcome.lock) + fmt::format("It stays: it is not older than {}.\n",
                                                  shownDuration(options.ageSeconds.value_or(0)));
    case UnlockResult::busy:
      return lockText(outcome.lock) + "It stays: a client is taking it over this moment.\n";
    case UnlockResult::replaced: break;
  }
  return lockText(outcome.lock) + "It has gone meanwhile, and a client has made another one.\n";
}

Outcome runUnlock(const UnlockOptions& options) {
  const UnlockOutcome outcome = unlockTable(options);
  if (!outcome.problem.empty()) return impossible("fleet unlock", printable(outcome.problem));
  const bool isFree =
      outcome.result == UnlockResult::noLock || outcome.result == UnlockResult::removed;
  return {isFree ? done : answerIsNo, resultText(outcome, options), ""};
}

}  // namespace

Command readUnlock(const Subcommand& self, Arguments arguments) {
  UnlockOptions unlock;
  OptionSet options(self);
  options.text("--table", unlock.table, "FILE", "The results table whose lock it is");
  options.duration("--age", unlock.ageSeconds,
                   "A younger lock stays: 90s, 15m, 2h, 1d, by the share's clock");
  options.flag("--yes", unlock.isConfirmed, "Remove it; else it is only shown");
  options.footer(
      "Without --yes it shows the lock, its age and its note.\n\n"
      "Example: a client was switched off while it appended its row; away with its lock\n"
      "  marrowctl fleet unlock --table results.csv --age 10m --yes\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (!options.words.empty()) return options.wrong("too much: " + options.words.front());
  if (unlock.table.empty()) return options.wrong("--table: name a results table");
  if (unlock.isConfirmed && !unlock.ageSeconds)
    return options.wrong("--yes needs --age: how old a lock must be to be removed");
  return FleetCommand{[unlock] { return runUnlock(unlock); }};
}

}  // namespace marrowbench::ctl
