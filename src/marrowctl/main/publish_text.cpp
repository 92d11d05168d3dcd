#include "marrowctl/main/publish_text.h"

#include <fmt/format.h>

#include <cstdint>
#include <cstdio>
#include <set>
#include <vector>

#include "marrowctl/check/text_parts.h"
#include "marrowctl/plan/totals.h"
#include "marrowctl/report/completeness.h"
#include "marrowctl/report/output.h"
#include "marrowctl/support/terminal.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

// Clients look every five seconds, and shares may show a new file some seconds late.
constexpr std::int64_t kShortWindowMs = 10'000;

// The time of day of "2026-11-16T02:21:29+01:00".
std::string timeOfDay(std::int64_t ms) { return isoTime(ms / 1000).substr(11, 8); }

void printFindings(std::vector<Finding> findings) {
  std::erase_if(findings,
                [](const Finding& finding) { return finding.severity == Severity::note; });
  const std::string text = findingsText(findings, styleOf(stderr));
  (void)std::fwrite(text.data(), 1, text.size(), stderr);
}

std::string pathsText(const char* what, const std::set<std::string>& templates) {
  std::string text;
  for (const std::string& each : templates) {
    if (!each.empty()) text += fmt::format("  {:<5} {}\n", what, printable(each));
  }
  return text;
}

// Where everything will be. As templates: of many clients each has paths of its own.
std::string placesText(const Plan& plan) {
  std::set<std::string> tables, logs, data;
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (line.kind != LineKind::test) continue;
      tables.insert(line.test.table);
      logs.insert(line.test.log);
      data.insert(line.test.source);
      data.insert(line.test.dest);
    }
  }
  return pathsText("table", tables) + pathsText("log", logs) + pathsText("data", data);
}

std::string clientsText(const Preparation& preparation, const Wanted& wanted) {
  if (preparation.roll.ready.empty()) return {};
  const ClockSpan clocks = clocksOf(preparation.roll);
  std::string text =
      fmt::format("{} ready, their clocks within {} ms of each other.\n",
                  shownCount(static_cast<std::int64_t>(preparation.roll.ready.size()), "client"),
                  shownCount(clocks.fastestMs - clocks.slowestMs + preparation.rounding));
  const std::vector<std::string> more = uninvited(preparation.roll, wanted);
  if (!more.empty())
    text += fmt::format("Ready, too, and starting with them: {}.\n", printable(shownNames(more)));
  return text;
}

void printPreparation(const Preparation& preparation, const PublishOptions& options,
                      std::FILE* output) {
  const Publication& publication = preparation.publication;
  if (publication.plan.files.empty()) return;
  printFindings(preparation.findings);
  const Totals totals = totalsOf(publication.plan);
  std::string text = fmt::format("{} as {}: {}.\n", printable(options.file),
                                 printable(options.folder.settings(options.phase)),
                                 shownCount(totals.rows, "row"));
  text += placesText(publication.plan);
  for (const std::string& difference : publication.differences)
    text += "  " + printable(difference) + "\n";
  text += clientsText(preparation, options.wanted);
  printNow(text, output);
}

}  // namespace

void printNow(const std::string& text, std::FILE* output) {
  (void)std::fwrite(text.data(), 1, text.size(), output);
  (void)std::fflush(output);
}

PublishListener printingListener(const PublishOptions& options, std::FILE* output) {
  PublishListener listener;
  listener.prepared = [&options, output](const Preparation& preparation) {
    printPreparation(preparation, options, output);
  };
  listener.waiting = [&options, output](std::int64_t seconds, const StartWindow& window) {
    printNow(fmt::format("{} in {}, for a start at {}.\n",
                         options.isDryRun ? "It would be published" : "It will be published",
                         shownDuration(seconds), timeOfDay(window.startMs)),
             output);
  };
  listener.published = [output](std::int64_t secondsToStart, const StartWindow& window) {
    printNow(fmt::format("Published. The tests start at {}, in {}; clients have {} to see it.\n",
                         timeOfDay(window.startMs), shownDuration(secondsToStart),
                         shownDuration(window.lengthMs / 1000)),
             output);
    if (window.lengthMs < kShortWindowMs) {
      printNow("That is little: those that see it later start a minute after the others.\n",
               output);
    }
  };
  return listener;
}

std::string refusalText(const std::string& subcommand, const std::string& problem,
                        const std::vector<std::string>& reasons) {
  std::string text = fmt::format("marrowctl {}: {}{}\n", subcommand, printable(problem),
                                 reasons.empty() ? "" : ":");
  for (const std::string& reason : reasons) text += "  " + printable(reason) + "\n";
  return text;
}

}  // namespace marrowbench::ctl
