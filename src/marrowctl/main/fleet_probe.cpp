#include <cstdio>
#include <string>
#include <string_view>

#include "marrowctl/fleet/probe.h"
#include "marrowctl/fleet/probe_output.h"
#include "marrowctl/main/fleet_options.h"
#include "marrowctl/support/progress_line.h"
#include "marrowctl/support/terminal.h"
#include "marrowctl/support/utf8.h"
#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

struct ProbeCommand {
  ProbeOptions probe;
  bool isJson = false;
};

Outcome runProbe(ProbeCommand command) {
  // Else a reader of this program that goes away would end it before its folder is removed.
  letWritesFail();
  ProgressLine line("marrowctl fleet probe: ", 0);
  command.probe.progress = [&line](std::string_view step) {
    line.show("trying " + std::string(step));
  };
  const ProbeOutcome outcome = probeShare(command.probe);
  line.clear();
  std::string left;
  if (!outcome.left.empty())
    left = "marrowctl fleet probe: left behind: " + printable(outcome.left) + "\n";
  if (!outcome.problem.empty()) {
    Outcome failure = impossible("fleet probe", printable(outcome.problem));
    failure.messages += left;
    return failure;
  }
  const ProbeJudgement judgement = judge(outcome.probe);
  const int status = judgement.verdict == ProbeVerdict::oneTable ? done : answerIsNo;
  if (command.isJson) return {status, probeJson(outcome.probe, judgement), left};
  return {status, probeText(outcome.probe, judgement, styleOf(stdout)), left};
}

}  // namespace

Command readProbe(const Subcommand& self, Arguments arguments) {
  ProbeCommand command;
  OptionSet options(self, " DIR [DIR2]");
  options.flag("--quick", command.probe.isQuick,
               "A few seconds: fewer rounds, late changes are not waited for");
  options.flag("--json", command.isJson, "One JSON document");
  options.footer(
      "DIR2 is the same folder through a second mount: what another client sees, and when.\n"
      "Linux gives it a memory of its own with nosharecache (NFS) or nosharesock (SMB) only.\n\n"
      "Example: may all clients use one table on this share?\n"
      "  marrowctl fleet probe . --quick\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (options.words.empty()) return options.wrong("name a folder on the share");
  if (options.words.size() > 2) return options.wrong("too much: " + options.words[2]);
  // As of a variable of a shell that is not set.
  for (const std::string& word : options.words) {
    if (word.empty()) return options.wrong("a folder's name is empty");
  }
  command.probe.folder = options.words[0];
  if (options.words.size() == 2) command.probe.second = options.words[1];
  return FleetCommand{[command] { return runProbe(command); }};
}

}  // namespace marrowbench::ctl
