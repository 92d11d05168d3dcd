#include <string>

#include "marrowctl/fleet/publish.h"
#include "marrowctl/main/fleet_options.h"
#include "marrowctl/main/publish_text.h"

namespace marrowbench::ctl {
namespace {

Outcome runPublish(const std::string& name, const PublishOptions& options) {
  const PublishOutcome outcome = publish(options, printingListener(options));
  if (outcome.status == done) return {};
  const char* const problem =
      outcome.refusals.empty() ? "not published: ended by a signal" : "not published";
  return {outcome.status, "", refusalText(name, problem, outcome.refusals)};
}

}  // namespace

Command readPublish(const Subcommand& self, Arguments arguments) {
  PublishOptions publish;
  WantedOptions wanted;
  bool isNow = false;
  OptionSet options(self, " FILE.bst");
  addControlFolder(options, publish.folder);
  addWanted(options, wanted);
  options.flag("--dry-run", publish.isDryRun, "Look at everything, and publish nothing");
  options.flag("--again", publish.leftoversMayStay,
               "Tables, markers and locks of an earlier run may stay");
  options.flag("--now", isNow, "Do not wait for the second that gives clients the most time");
  options.footer(
      "Example: start the 20 clients that are armed for the run monday\n"
      "  marrowctl fleet publish --control /share/control --run monday --hosts 'c[01-20]' "
      "many_clients.bst\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (const auto outcome = problemOf(options, publish.folder)) return *outcome;
  if (options.words.empty()) return options.wrong("name a settings file");
  if (options.words.size() > 1) return options.wrong("too much: " + options.words[1]);
  if (const auto outcome = requireWanted(options, wanted)) return *outcome;
  if (const auto outcome = takeWanted(self, wanted, publish.wanted)) return *outcome;
  publish.file = options.words.front();
  publish.waitsForMoment = !isNow;
  const std::string name = self.name;
  return FleetCommand{[publish, name] { return runPublish(name, publish); }};
}

}  // namespace marrowbench::ctl
