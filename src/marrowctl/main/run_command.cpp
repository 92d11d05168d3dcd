#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "marrowctl/check/check.h"
#include "marrowctl/check/output.h"
#include "marrowctl/check/text_parts.h"
#include "marrowctl/main/commands.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/read_tables.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/plan/totals.h"
#include "marrowctl/report/make_report.h"
#include "marrowctl/report/output.h"
#include "marrowctl/report/page/page.h"
#include "marrowctl/run/added_rows.h"
#include "marrowctl/run/measurement.h"
#include "marrowctl/support/program_path.h"
#include "marrowctl/support/terminal.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"
#include "paths/host_name.h"
#include "support/clock.h"
#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

constexpr const char* kProgram = "marrowbench";
constexpr int kSignalled = 128;

// What is known of the settings files at one moment.
struct Checked {
  explicit Checked(const std::string& file)
      : plan(makePlan({{file}, {}, 0}, std::cin)),
        totals(totalsOf(plan)),
        findings(check(plan, totals)) {}

  Plan plan;
  Totals totals;
  std::vector<Finding> findings;
};

// Those that stop a run or are to be known before it. @param files  empty: of all
std::vector<Finding> shownFindings(const std::vector<Finding>& findings,
                                   const std::vector<std::string>& files) {
  std::vector<Finding> shown;
  std::copy_if(findings.begin(), findings.end(), std::back_inserter(shown),
               [&files](const Finding& finding) {
                 const bool isAsked = files.empty() || std::find(files.begin(), files.end(),
                                                                 finding.file) != files.end();
                 return isAsked && finding.severity != Severity::note;
               });
  return shown;
}

void say(const std::string& text) {
  (void)std::fputs(text.c_str(), stderr);
  (void)std::fflush(stderr);
}

void sayFindings(const std::vector<Finding>& findings) {
  if (findings.empty()) return;
  const TextStyle style = styleOf(stderr);
  say(findingsText(findings, style) + countsText(findings, style));
}

std::vector<std::string> missingFiles(const Plan& plan) {
  std::vector<std::string> names;
  for (const PlannedFile& file : plan.files) {
    if (!file.exists) names.push_back(file.path);
  }
  return names;
}

// One run: from the settings file to the verdict.
class Run {
 public:
  Run(const RunCommand& runCommand, std::string programPath, std::string settingsFile)
      : command(runCommand),
        program(std::move(programPath)),
        file(std::move(settingsFile)),
        host(hostName().view()),
        checked(file),
        added(host, currentSeconds()),
        progress(checked.plan, checked.totals) {}

  Outcome outcome() {
    if (const int status = exitStatusOf(checked.findings, command.isStrict); status != done) {
      return {status, checkText(checked.plan, checked.totals, checked.findings, styleOf(stdout)),
              "marrowctl run: nothing was measured\n"};
    }
    sayFindings(shownFindings(checked.findings, {}));
    added.remember(checked.plan);
    return measured();
  }

 private:
  Outcome measured() {
    ConsoleFile console(fs::path(file).stem().string());
    if (console.failure() != 0)
      return impossible("run", console.path() + ": " + std::strerror(console.failure()));
    // Else a terminal or a pipe that goes away would end this program and not the other one.
    letWritesFail();
    ProgressLine line("marrowctl run: ", 0);
    Measurement measurement(progress, line, [this, &line] {
      line.clear();
      return fileArrived();
    });
    if (const int code = measurement.run(program, file, console); code != 0) {
      (void)fs::remove(console.path());
      return impossible("run", program + ": " + std::strerror(code));
    }
    Outcome outcome = reported(measurement);
    outcome.messages += "marrowctl run: what marrowbench printed is in " + console.path() + "\n";
    return outcome;
  }

  // What was waited for is checked as what was there is.
  bool fileArrived() {
    const std::vector<std::string> waited = missingFiles(checked.plan);
    checked = Checked(file);
    progress.setPlan(checked.plan, checked.totals);
    const std::vector<Finding> found = shownFindings(checked.findings, waited);
    sayFindings(found);
    refusal = exitStatusOf(found, command.isStrict);
    return refusal == done;
  }

  Outcome reported(const Measurement& measurement) {
    OwnRows own(checked.plan, measurement.console(), host);
    ReadOptions reading;
    reading.tables = added.grownTables(checked.plan);
    reading.plan = &checked.plan;
    reading.hosts = {host};
    reading.onlyHost = host;
    reading.allRuns = true;
    reading.choice = added.choice(own);
    ReadOutcome read;
    if (!reading.tables.empty()) read = readTables("run", std::move(reading));
    const bool isRead = own.found() > 0 && read.problem.empty();
    Outcome outcome =
        isRead ? judged(std::move(read), own) : withoutRows(own, measurement.end(), read);
    outcome.messages = endOf(measurement.end()) + lossOf(measurement.console()) + outcome.messages;
    outcome.status = statusOf(measurement.end(), outcome.status);
    return outcome;
  }

  Outcome judged(ReadOutcome read, const OwnRows& own) {
    // Lines that can't be used are another client's where none of this run's rows is missing.
    if (own.found() == own.expected()) read.set.unusable.clear();
    ReportOptions options;
    options.plan = &checked.plan;
    options.hosts = {host};
    options.clients = 1;
    const Report report = makeReport(std::move(read.set), options);
    return delivered(report);
  }

  [[nodiscard]] Outcome delivered(const Report& report) const {
    Outcome text{exitStatusOf(report), reportText(report, styleOf(stdout)), ""};
    if (command.page.file.empty()) return text;
    Outcome outcome =
        withPage("run", command.page, pageOf(report, kPageMaker), [&text] { return text; });
    // A page that could not be written takes no figure away: nobody measures twice for it.
    outcome.output = text.output;
    return outcome;
  }

  [[nodiscard]] Outcome withoutRows(const OwnRows& own, const MeasurementEnd& end,
                                    const ReadOutcome& read) const {
    const bool hasTables = checked.totals.rowsPerClient > 0 && end.signal == 0;
    if (own.expected() == 0 && !hasTables)
      return {done, "", "marrowctl run: it added no row to a table\n"};
    if (!read.problem.empty()) return impossible("run", read.problem);
    return impossible("run", "none of its rows was found in its tables");
  }

  static std::string lossOf(const ConsoleFollower& console) {
    if (console.rowsLost() == 0) return {};
    return fmt::format("marrowctl run: {} lost{}: {}\n", shownCount(console.rowsLost(), "row"),
                       console.rowsLost() > 1 ? ", the first one" : "",
                       printable(console.firstLoss()));
  }

  [[nodiscard]] std::string endOf(const MeasurementEnd& end) const {
    const std::string front = "marrowctl run: ";
    if (end.leftBehind != 0) {
      return fmt::format("{}marrowbench, process {}, has not ended yet\n", front, end.leftBehind);
    }
    if (end.isRefused) return front + "ended: the settings file that was waited for is no good\n";
    if (end.signal != 0)
      return fmt::format("{}ended by signal {}, {}\n", front, end.signal, strsignal(end.signal));
    if (end.program.signal != 0) {
      return fmt::format("{}marrowbench was ended by signal {}, {}\n", front, end.program.signal,
                         strsignal(end.program.signal));
    }
    if (end.program.exitStatus == 0) return {};
    return fmt::format("{}marrowbench failed: exit status {}\n", front, end.program.exitStatus);
  }

  [[nodiscard]] int statusOf(const MeasurementEnd& end, int status) const {
    if (end.signal != 0) return kSignalled + end.signal;
    if (end.isRefused) return refusal;
    const bool isWhole = end.program.signal == 0 && end.program.exitStatus == 0;
    return isWhole ? status : static_cast<int>(notDone);
  }

  const RunCommand& command;
  const std::string program;
  const std::string file;
  const std::string host;
  Checked checked;
  AddedRows added;
  RunProgress progress;
  int refusal = done;  // what the check of a file that was waited for came to
};

}  // namespace

Outcome runRun(const RunCommand& command, const std::string& ownPath) {
  const std::string program =
      command.program.empty() ? pathOfNeighbour(ownPath, kProgram) : command.program;
  if (program.empty()) {
    return impossible("run",
                      "marrowbench is neither beside marrowctl nor in PATH; --marrowbench "
                      "tells where it is");
  }
  if (const auto outcome = refusedPage("run", command.page)) return *outcome;
  std::error_code code;
  const std::string file = fs::absolute(command.file, code).string();
  if (fs::is_directory(file, code))
    return impossible("run", command.file + ": " + std::strerror(EISDIR));
  // One that is not there is waited for.
  if (access(file.c_str(), R_OK) != 0 && errno != ENOENT)
    return impossible("run", command.file + ": " + std::strerror(errno));
  return Run(command, program, file).outcome();
}

}  // namespace marrowbench::ctl
