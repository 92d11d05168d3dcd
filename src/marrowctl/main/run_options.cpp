#include "marrowctl/main/option_set.h"
#include "marrowctl/main/page_options.h"

namespace marrowbench::ctl {

Command readRun(const Subcommand& self, Arguments arguments) {
  RunCommand run;
  OptionSet options(self, " FILE.bst");
  options.flag("--strict", run.isStrict, "Warnings stop it, too: exit status 1");
  options.text("--marrowbench", run.program, "PATH",
               "The program that measures; default: beside marrowctl, else in PATH");
  addPageOptions(options, run.page);
  options.footer(
      "Checks the file, runs marrowbench with it on this machine and reports the rows that this "
      "run\n"
      "added to its tables.\n\n"
      "Example: how fast is this folder?\n"
      "  marrowctl run first.bst\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (options.words.empty()) return options.wrong("name a settings file");
  if (options.words.size() > 1) return options.wrong("one settings file at a time");
  run.file = options.words.front();
  if (run.file == "-") return options.wrong("a settings file cannot be the standard input here");
  return run;
}

}  // namespace marrowbench::ctl
