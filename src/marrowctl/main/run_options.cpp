#include "marrowctl/main/fleet_run.h"
#include "marrowctl/main/option_set.h"
#include "marrowctl/main/page_options.h"

namespace marrowbench::ctl {

Command readRun(const Subcommand& self, Arguments arguments) {
  RunCommand run;
  FleetRunOptions fleet;
  OptionSet options(self, " FILE.bst");
  options.flag("--strict", run.isStrict, "Warnings stop it, too: exit status 1");
  options.text("--marrowbench", run.program, "PATH",
               "The program that measures; default: beside marrowctl, else in PATH");
  addPageOptions(options, run.page);
  addFleetRunOptions(options, fleet);
  options.footer(
      "Checks the file, runs marrowbench with it on this machine and reports the rows that this "
      "run\n"
      "added to its tables. With --via on many clients: says and does what \"marrowctl fleet\" "
      "does\n"
      "step by step.\n\n"
      "Example: how fast is this folder?\n"
      "  marrowctl run first.bst\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (options.words.empty()) return options.wrong("name a settings file");
  if (options.words.size() > 1) return options.wrong("one settings file at a time");
  run.file = options.words.front();
  if (run.file == "-") return options.wrong("a settings file cannot be the standard input here");
  if (const auto outcome = problemOf(options, run, fleet)) return *outcome;
  if (fleet.engine.empty()) return run;
  return FleetCommand{[run, fleet] { return runFleet(run, fleet); }};
}

}  // namespace marrowbench::ctl
