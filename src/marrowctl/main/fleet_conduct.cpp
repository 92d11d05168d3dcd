#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>

#include "marrowctl/fleet/conduct.h"
#include "marrowctl/main/fleet_options.h"
#include "marrowctl/main/publish_text.h"
#include "marrowctl/main/watch_display.h"

namespace marrowbench::ctl {
namespace {

Outcome runConduct(const std::string& name, const ConductOptions& options) {
  std::optional<WatchDisplay> display;
  ConductListener listener;
  listener.publishing = [&display](const PublishOptions& phase) {
    display.reset();
    return printingListener(phase);
  };
  listener.looked = [&display](const RunState& state) {
    if (!display) display.emplace(stderr);
    display->show(state, false);
  };
  listener.phaseDone = [&](std::size_t phase) {
    display.reset();
    printNow(fmt::format("Phase {} of {} is done.\n", phase, options.files.size()));
  };
  const ConductOutcome outcome = conduct(options, listener);
  display.reset();
  if (outcome.problem.empty()) return {outcome.status, "", ""};
  return {outcome.status, "", refusalText(name, outcome.problem, outcome.reasons)};
}

}  // namespace

Command readConduct(const Subcommand& self, Arguments arguments) {
  ConductOptions conduct;
  WantedOptions wanted;
  bool isNow = false;
  OptionSet options(self, " PHASE1.bst PHASE2.bst...");
  addControlFolder(options, conduct.folder);
  addWanted(options, wanted);
  options.flag("--again", conduct.leftoversMayStay,
               "Tables, markers and locks of an earlier run may stay");
  options.flag("--now", isNow, "Do not wait for the second that gives clients the most time");
  options.duration("--timeout", conduct.timeoutSeconds,
                   "Stop when a phase takes longer: 90s, 15m, 2h, 1d");
  options.footer(
      "A phase begins when every client has left its done marker for the one before.\n\n"
      "Example: all clients write, then all read what another one wrote\n"
      "  marrowctl fleet conduct --control /share/control --run monday --hosts 'c[01-20]' "
      "write.bst read.bst\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (const auto outcome = problemOf(options, conduct.folder)) return *outcome;
  if (options.words.empty()) return options.wrong("name a settings file for each phase");
  if (const auto outcome = requireWanted(options, wanted)) return *outcome;
  if (const auto outcome = takeWanted(self, wanted, conduct.wanted)) return *outcome;
  if (std::find(options.words.begin(), options.words.end(), "-") != options.words.end())
    return options.wrong("each phase is a file, not \"-\"");
  conduct.files = options.words;
  conduct.waitsForMoment = !isNow;
  const std::string name = self.name;
  return FleetCommand{[conduct, name] { return runConduct(name, conduct); }};
}

}  // namespace marrowbench::ctl
