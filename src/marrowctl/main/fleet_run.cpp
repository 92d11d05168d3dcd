#include "marrowctl/main/fleet_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "marrowctl/check/check.h"
#include "marrowctl/check/output.h"
#include "marrowctl/check/text_parts.h"
#include "marrowctl/fleet/muster.h"
#include "marrowctl/fleet/probe.h"
#include "marrowctl/fleet/probe_output.h"
#include "marrowctl/fleet/publish.h"
#include "marrowctl/fleet/table_patterns.h"
#include "marrowctl/main/commands.h"
#include "marrowctl/main/fleet_run_words.h"
#include "marrowctl/main/page_options.h"
#include "marrowctl/main/publish_text.h"
#include "marrowctl/main/watch_run.h"
#include "marrowctl/plan/expansion.h"
#include "marrowctl/support/host_list.h"
#include "marrowctl/support/interruption.h"
#include "marrowctl/support/progress_line.h"
#include "marrowctl/support/terminal.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"
#include "paths/host_name.h"
#include "support/clock.h"
#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kName = "run";
constexpr std::int32_t kTickMs = 100;
constexpr int kSignalBase = 128;
// Foreground clients leave their engine when they have written their finished files.
constexpr std::int64_t kSecondsOfEngine = 30;

void say(const std::string& text) {
  (void)std::fputs(text.c_str(), stderr);
  (void)std::fflush(stderr);
}

// Shells say that they find no such program each in its own way, but all with these two words.
std::string hintOn(const std::string& said, const std::string& program) {
  if (!holds(said, program) || !holds(said, "not found")) return {};
  return "marrowctl run: " + program +
         " is not in the PATH that the clients have there: --marrowctl PATH says where it is\n";
}

// The first table that several clients write to.
std::string sharedTable(const Plan& plan) {
  if (!plan.isForManyClients()) return {};
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      const bool isShared = line.kind == LineKind::test && !line.test.table.empty() &&
                            !holds(line.test.table, "[host]");
      if (isShared) return line.test.table;
    }
  }
  return {};
}

// One run, step by step. A step that returns something is the last one.
class FleetRun {
 public:
  FleetRun(const RunCommand& runCommand, const FleetRunOptions& values, Engine chosen)
      : command(runCommand),
        engineName(values.engine),
        recipe(values.recipe),
        timeoutSeconds(values.timeoutSeconds) {
    publishing.file = command.file;
    publishing.folder = recipe.folder;
    for (const std::string& host : recipe.hosts)
      publishing.wanted.hosts.emplace_back(hostNameFrom(host).view());
    mustering = {chosen, recipe, publishing.wanted};
  }

  Outcome outcome() {
    using Step = std::optional<Outcome> (FleetRun::*)();
    constexpr std::array<Step, 5> kSteps = {&FleetRun::checkFile, &FleetRun::probe,
                                            &FleetRun::armClients, &FleetRun::publishFile,
                                            &FleetRun::lookOn};
    for (const Step step : kSteps) {
      if (auto last = (this->*step)()) return *std::move(last);
    }
    return report();
  }

 private:
  std::optional<Outcome> checkFile() {
    sayStep(checkWords(recipe, command));
    publishing.isBeforeArming = true;
    const Preparation preparation = prepareToPublish(publishing);
    publishing.isBeforeArming = false;
    plan = preparation.publication.plan;
    std::vector<Finding> findings = preparation.findings;
    std::erase_if(findings, [](const Finding& each) { return each.severity == Severity::note; });
    const int status = std::max(preparation.status, exitStatusOf(findings, command.isStrict));
    // Else they are told when the file is published.
    if (status == done) return std::nullopt;
    say(findingsText(findings, styleOf(stderr)));
    return stopped(status, "no client was armed", preparation.refusals);
  }

  std::optional<Outcome> probe() {
    sayStep(probeWords(recipe));
    ProgressLine line("marrowctl run: ", 0);
    ProbeOptions options;
    options.folder = recipe.folder.control;
    options.isQuick = true;
    options.progress = [&line](std::string_view what) { line.show("trying " + std::string(what)); };
    const ProbeOutcome found = probeShare(options);
    line.clear();
    if (!found.left.empty()) say("marrowctl run: left behind: " + printable(found.left) + "\n");
    if (!found.problem.empty()) return impossible(kName, printable(found.problem));
    const ProbeJudgement judgement = judge(found.probe);
    say(probeVerdictText(judgement, styleOf(stderr)));
    if (judgement.verdict == ProbeVerdict::notUsable)
      return stopped(answerIsNo, "no client was armed: this share is not usable");
    const std::string table = sharedTable(plan);
    if (judgement.verdict == ProbeVerdict::ownTables && !table.empty()) {
      return stopped(answerIsNo, "no client was armed: all would write to " + table);
    }
    return std::nullopt;
  }

  std::optional<Outcome> armClients() {
    sayRecipe(mustering.engine, engineName, recipe);
    ProgressLine line("marrowctl run: ", 0);
    std::size_t last = 0;
    const MusterOutcome found = muster(mustering, engine, [&](const MusterLook& look) {
      if (!line.isDue() && look.ready == last) return;
      last = look.ready;
      if (!look.problem.empty()) return line.show("can't be seen: " + printable(look.problem));
      line.show(fmt::format(
          "{} of {} ready after {}, {} {}", shownCount(static_cast<std::int64_t>(look.ready)),
          shownCount(static_cast<std::int64_t>(recipe.hosts.size()), "client"),
          shownDuration(look.seconds), engineName, look.engineRuns ? "still runs" : "has ended"));
    });
    line.clear();
    if (found.status == done) return std::nullopt;
    const char* const problem =
        found.status == answerIsNo ? "not all clients are armed" : "clients could not be armed";
    Outcome outcome = stopped(found.status, problem, found.problems);
    if (const std::string said = engine.lastLines(); !said.empty()) {
      outcome.messages +=
          engineName + " printed:\n" + printableLines(said) + hintOn(said, recipe.program);
    }
    outcome.messages += found.ready == 0 && found.status > kSignalBase
                            ? "clients may be armed by now; " + endOfWait()
                            : endOfArmed(found.ready);
    return outcome;
  }

  std::optional<Outcome> publishFile() {
    sayStep(publishWords(recipe, command));
    const PublishOutcome published = publish(publishing, printingListener(publishing, stderr));
    if (published.status == done) return std::nullopt;
    Outcome outcome = stopped(published.status, "not published", published.refusals);
    outcome.messages += endOfArmed(readyNow());
    return outcome;
  }

  std::optional<Outcome> lookOn() {
    // An engine whose clients are detached has ended by now, and its recipe goes away.
    (void)engine.end();
    sayStep(watchWords(recipe, timeoutSeconds));
    WatchCommand watch;
    watch.folder = recipe.folder;
    watch.wanted = publishing.wanted;
    watch.timeoutSeconds = timeoutSeconds;
    watched = watchRun(watch, stderr);
    if (watched.status == done || watched.status == answerIsNo) {
      say(watched.messages);
      awaitEngine();
      const auto there = static_cast<std::int64_t>(watched.status == done ? 0 : readyNow());
      if (there > 0 && !endsClients()) {
        say("marrowctl run: " + shownCount(there, "client") +
            " still at work without this program\n");
      }
      return std::nullopt;
    }
    Outcome outcome =
        stopped(watched.status, endsClients() ? engineName + " ends, and the clients with it"
                                              : "the clients go on without this program");
    outcome.messages = watched.messages + outcome.messages;
    return outcome;
  }

  Outcome report() {
    ReportCommand reporting;
    reporting.tables = tablePatterns(plan);
    if (reporting.tables.empty())
      return {watched.status, "", "marrowctl run: no line asks for a row in a table\n"};
    reporting.from.settings = {recipe.folder.settings()};
    reporting.from.hostLists = {listOf(recipe)};
    // Without it nobody has come to the end, which the rows tell as well.
    std::error_code code;
    const std::string markers = recipe.folder.doneFolder();
    if (std::filesystem::is_directory(markers, code)) reporting.doneFolder = markers;
    reporting.page = command.page;
    sayStep(reportWords(recipe, reporting));
    Outcome outcome = runReport(reporting);
    outcome.status = std::max(outcome.status, watched.status);
    return outcome;
  }

  // Some engines keep their clients, which end right behind their last row.
  void awaitEngine() {
    const Interruption interruption;
    for (std::int64_t waited = 0; waited < kSecondsOfEngine * 1000; waited += kTickMs) {
      if (engine.end() || watched.status != done || interruption.signal() != 0) return;
      sleepMs(kTickMs);
    }
  }

  // The engine ends with this program, and with it clients that stay in its foreground.
  [[nodiscard]] bool endsClients() { return mustering.engine == Engine::srun && !engine.end(); }

  [[nodiscard]] std::string endOfArmed(std::size_t ready) {
    if (ready == 0 || endsClients()) return {};
    return (ready == 1 ? "1 client stays"
                       : shownCount(static_cast<std::int64_t>(ready)) + " clients stay") +
           " armed; " + endOfWait();
  }

  [[nodiscard]] std::string endOfWait() const {
    return fmt::format("without a run they stop {} after they were armed\n",
                       shownDuration(recipe.giveUp.value_or(0)));
  }

  // Some may have given up meanwhile.
  [[nodiscard]] std::size_t readyNow() const {
    ClockReading reading;
    Roll roll;
    const bool isKnown = readShareClock(recipe.folder.control, reading) == 0 &&
                         callRoll(recipe.folder, ShareTime(reading), roll) == 0;
    return isKnown ? roll.ready.size() : recipe.hosts.size();
  }

  static Outcome stopped(int status, const std::string& problem,
                         const std::vector<std::string>& reasons = {}) {
    const bool isSignalled = status > kSignalBase;
    return {status, "",
            refusalText(kName, isSignalled ? problem + ": ended by a signal" : problem, reasons)};
  }

  const RunCommand& command;
  const std::string engineName;
  const RecipeOptions recipe;
  const std::optional<std::int64_t> timeoutSeconds;
  PublishOptions publishing;
  MusterOptions mustering;
  Plan plan;
  RecipeProcess engine;
  Outcome watched;
};

}  // namespace

Outcome runFleet(const RunCommand& run, FleetRunOptions values) {
  if (const auto outcome = refusedPage(kName, run.page)) return *outcome;
  // Else a terminal or a pipe that goes away would end this program in the middle of a run.
  letWritesFail();
  HostList hosts = readHostList(values.hostList);
  if (hosts.isUnreadable) return impossible(kName, hosts.problem);
  if (!hosts.problem.empty()) return wrongUsageOf(kName, "--hosts: " + hosts.problem);
  values.recipe.hosts = std::move(hosts.names);
  const Engine engine = engineNamed(values.engine).value_or(Engine::ssh);
  // Before anything is done: a name that no recipe can hold, say.
  const Recipe recipe = makeRecipe(engine, values.recipe);
  if (!recipe.problem.empty()) return wrongUsageOf(kName, recipe.problem);
  return FleetRun(run, values, engine).outcome();
}

}  // namespace marrowbench::ctl
