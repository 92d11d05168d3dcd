#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include "marrowctl/fleet/arm.h"
#include "marrowctl/main/detachment.h"
#include "marrowctl/main/fleet_options.h"
#include "marrowctl/support/utf8.h"
#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

struct ArmCommand {
  ArmOptions arm;
  bool detaches = false;
};

void print(std::string_view text, std::FILE* file) {
  (void)std::fwrite(text.data(), 1, text.size(), file);
  (void)std::fflush(file);
}

Outcome runArm(const ArmCommand& command) {
  // The program goes on when nobody reads what it prints, and so does this one.
  letWritesFail();
  Detachment detachment;
  if (command.detaches) {
    if (const auto outcome = detachment.leave()) return *outcome;
  }
  bool isArmed = false;
  const auto say = [](const std::string& message) {
    // It may quote what another machine has written into a file on the share.
    print("marrowctl fleet arm: " + printable(message) + "\n", stderr);
  };
  const ArmListener listener{say,
                             [&command](std::string_view text) {
                               if (!command.detaches) print(text, stdout);
                             },
                             [&](const std::string& host, const std::string& settings) {
                               isArmed = true;
                               say(host + " is armed: marrowbench waits for " + settings);
                               if (command.detaches) detachment.goOnAlone();
                             }};
  const ArmOutcome outcome = arm(command.arm, listener);
  if (command.detaches && !isArmed && outcome.reason.empty()) {
    say(fmt::format("{} did not wait: it has ended, exit status {}", command.arm.program,
                    outcome.status));
    return {std::max(outcome.status, static_cast<int>(answerIsNo)), "", ""};
  }
  if (outcome.reason.empty()) return {outcome.status, "", ""};
  return {outcome.status, "", "marrowctl fleet arm: " + printable(outcome.reason) + "\n"};
}

}  // namespace

Command readArm(const Subcommand& self, Arguments arguments) {
  ArmCommand command;
  command.arm.version = MARROWCTL_VERSION;
  OptionSet options(self);
  addControlFolder(options, command.arm.folder);
  options.flag("--detach", command.detaches,
               "Come back when the client is armed; it goes on when the shell ends");
  options.duration("--give-up", command.arm.giveUpSeconds,
                   "Stop when no settings file has come for so long: 90s, 15m, 2h, 1d");
  options.text("--program", command.arm.program, "PATH",
               "marrowbench; default: beside marrowctl, else found in PATH");
  options.footer(
      "Starts marrowbench on a settings file that is still to come: \"fleet publish\" puts it "
      "there.\n"
      "Without --detach its console and exit status are marrowbench's.\n\n"
      "Example: this machine takes part in a run called monday\n"
      "  marrowctl fleet arm --control . --run monday --detach --give-up 2h\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (const auto outcome = problemOf(options, command.arm.folder)) return *outcome;
  if (!options.words.empty()) return options.wrong("too much: " + options.words.front());
  if (command.arm.program.empty()) command.arm.program = programBeside("marrowbench");
  return FleetCommand{[command] { return runArm(command); }};
}

}  // namespace marrowbench::ctl
