#include <cstdio>

#include "marrowctl/main/fleet_options.h"
#include "marrowctl/main/watch_run.h"

namespace marrowbench::ctl {

Command readWatch(const Subcommand& self, Arguments arguments) {
  WatchCommand command;
  WantedOptions wanted;
  OptionSet options(self);
  addControlFolder(options, command.folder);
  addWanted(options, wanted);
  options.duration("--timeout", command.timeoutSeconds,
                   "Stop after so long: 90s, 15m, 2h, 1d; 0 looks once");
  options.flag("--json", command.isJson, "One JSON document at the end");
  options.footer(
      "Ends when every client has left its markers and every row is there: exit status 0.\n\n"
      "Example: look on until the run monday is done, two hours at most\n"
      "  marrowctl fleet watch --control /share/control --run monday --timeout 2h\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (const auto outcome = problemOf(options, command.folder)) return *outcome;
  if (!options.words.empty()) return options.wrong("too much: " + options.words.front());
  if (const auto outcome = takeWanted(self, wanted, command.wanted)) return *outcome;
  return FleetCommand{[command] { return watchRun(command, command.isJson ? stderr : stdout); }};
}

}  // namespace marrowbench::ctl
