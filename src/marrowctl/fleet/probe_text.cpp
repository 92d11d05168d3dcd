#include <fmt/format.h>

#include <string>
#include <string_view>

#include "marrowctl/fleet/probe_output.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr int kLabelColumns = 20;

// A figure with its label in front; longer ones go on below themselves.
std::string line(std::string_view label, std::string_view text, const TextStyle& style) {
  const std::string block = wrapped(text, kLabelColumns, style.width);
  return fmt::format("{:<{}}{}", label, kLabelColumns,
                     std::string_view(block).substr(kLabelColumns));
}

std::string shownTime(std::optional<double> seconds, double limit) {
  if (!seconds) return fmt::format("over {:.0f} s", limit);
  if (*seconds < 0.0995) return fmt::format("{:.1f} ms", *seconds * 1000);
  return fmt::format("{:.1f} s", *seconds);
}

std::string mountText(const std::string& folder, const std::optional<Mount>& mount) {
  if (!mount) return printable(folder);
  return printable(
      fmt::format("{} ({} {}, {})", folder, mount->type, mount->source, mount->options));
}

std::string racesText(const CreateRaces& races) {
  std::string text = fmt::format(
      "one winner in {} of {}, {} each", races.oneWinner, shownCount(races.rounds, "round"),
      races.processes == 1 ? "1 process" : fmt::format("{} processes", races.processes));
  if (races.severalWinners > 0) text += fmt::format("; several in {}", races.severalWinners);
  if (races.noWinner > 0) text += fmt::format("; none in {}", races.noWinner);
  for (const auto& [answer, count] : races.otherAnswers)
    text += fmt::format("; losers were told \"{}\" {}", answer, shownCount(count, "time"));
  return text;
}

std::string rowsText(const Probe& probe) {
  std::string text;
  if (probe.secondsPerRow) text = "one takes " + shownTime(probe.secondsPerRow, 0) + "; ";
  if (!probe.rows) return text + "not tried";
  const RowTest& rows = *probe.rows;
  text += fmt::format("{} of {} kept that {} wrote at once", rows.kept,
                      shownCount(rows.told, "row"), shownCount(rows.clients, "client"));
  if (rows.locked > 0) text += fmt::format("; {} found the lock held", rows.locked);
  if (rows.failed > 0) text += fmt::format("; {} could not be written", rows.failed);
  if (rows.headers != 1) text += fmt::format("; {} headers", rows.headers);
  return text;
}

std::string timesText(const FileTimes& times) {
  std::string text = times.granularityNs >= 1'000'000'000
                         ? fmt::format("in steps of {} s", times.granularityNs / 1'000'000'000)
                     : times.granularityNs >= 1'000'000 ? "in milliseconds"
                                                        : "finer than milliseconds";
  const double middle = (times.leastAheadSeconds + times.mostAheadSeconds) / 2;
  const double error = (times.mostAheadSeconds - times.leastAheadSeconds) / 2;
  return text +
         fmt::format("; the share's clock is {:+.3f} s off this machine's, give or take {:.3f} s",
                     middle, error);
}

std::string delaysText(const SecondMount& second) {
  const struct {
    const char* label;
    const Delays& delays;
  } rows[] = {
      {"  a new file", second.newFile},           {"  .. looked for", second.newFileLookedFor},
      {"  .. and listed", second.newFileListed},  {"  a removed file", second.removedFile},
      {"  a file that grew", second.changedFile}, {"  a file replaced", second.replacedFile}};
  std::string text =
      fmt::format("{:<{}}{:>9} {:>9}\n", "The other sees", kLabelColumns, "median", "longest");
  for (const auto& row : rows) {
    text += fmt::format("{:<{}}{:>9} {:>9}\n", row.label, kLabelColumns,
                        shownTime(row.delays.median(), second.limitSeconds),
                        shownTime(row.delays.longest(), second.limitSeconds));
  }
  return text;
}

std::string_view headline(ProbeVerdict verdict) {
  switch (verdict) {
    case ProbeVerdict::oneTable: return "One table is safe";
    case ProbeVerdict::ownTables: return "Use [host] in the results path: a table for each client";
    case ProbeVerdict::notUsable: break;
  }
  return "Not usable";
}

Tone toneOf(ProbeVerdict verdict) {
  switch (verdict) {
    case ProbeVerdict::oneTable: return Tone::green;
    case ProbeVerdict::ownTables: return Tone::yellow;
    case ProbeVerdict::notUsable: break;
  }
  return Tone::red;
}

std::string list(const std::vector<std::string>& texts, const TextStyle& style) {
  std::string lines;
  for (const std::string& text : texts)
    lines += "  -" + wrapped(printable(text), 4, style.width).substr(3);
  return lines;
}

}  // namespace

std::string probeVerdictText(const ProbeJudgement& judgement, const TextStyle& style) {
  std::string text(headline(judgement.verdict));
  if (judgement.isOfOneMount) text += ", as far as one mount can show";
  if (judgement.clients) {
    text +=
        fmt::format(", for up to {} that finish in step", shownCount(*judgement.clients, "client"));
  }
  text = toned(text + ".", toneOf(judgement.verdict), style) + "\n";
  text += list(judgement.reasons, style);
  if (!judgement.notes.empty()) text += "Besides:\n" + list(judgement.notes, style);
  if (!judgement.options.empty())
    text += "Mount options that help:\n" + list(judgement.options, style);
  return text;
}

std::string probeText(const Probe& probe, const ProbeJudgement& judgement, const TextStyle& style) {
  std::string text = line("Folder", mountText(probe.asked.folder, probe.mount), style);
  if (!probe.asked.second.empty())
    text += line("and", mountText(probe.asked.second, probe.secondMountPoint), style);
  if (probe.races) text += line("Exclusive create", racesText(*probe.races), style);
  text += line("Rows", rowsText(probe), style);
  // What one memory shows of itself would read as what another client sees.
  if (probe.second && probe.seesAnotherClient()) text += delaysText(*probe.second);
  text += line("Preallocation",
               probe.preallocationRefusal ? "refused: " + *probe.preallocationRefusal : "accepted",
               style);
  if (probe.times) text += line("Times of files", timesText(*probe.times), style);
  text += line("Names",
               probe.isCaseSensitive ? "small and capital letters differ"
                                     : "small and capital letters are the same",
               style);
  return text + "\n" + probeVerdictText(judgement, style);
}

}  // namespace marrowbench::ctl
