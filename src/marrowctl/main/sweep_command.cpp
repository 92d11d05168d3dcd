#include <fmt/format.h>

#include <string>
#include <vector>

#include "marrowctl/check/check.h"
#include "marrowctl/main/commands.h"
#include "marrowctl/support/host_list.h"
#include "marrowctl/support/new_files.h"
#include "marrowctl/support/utf8.h"
#include "marrowctl/sweep/sweep.h"
#include "marrowctl/sweep/sweep_objections.h"

namespace marrowbench::ctl {
namespace {

Outcome refused(const std::vector<Finding>& objections) {
  Outcome outcome{exitStatusOf(objections, true), "", ""};
  for (const Finding& finding : objections) {
    outcome.messages += fmt::format("marrowctl sweep: {}; {} [{}]\n", printable(finding.message),
                                    printable(finding.remedy), finding.name);
  }
  return outcome;
}

Outcome writeSweep(const SweepResult& sweep, const SweepOptions& options, bool overwrites) {
  std::vector<NewFile> files;
  std::string written;
  for (const SweepFile& file : sweep.files) {
    if (file.name == "-") continue;
    files.push_back({file.name, file.text});
    written += "marrowctl sweep: written: " + file.name + "\n";
  }
  std::string problem = problemWith(files, overwrites);
  if (!problem.empty()) return impossible("sweep", problem);
  const std::vector<Finding> objections = objectionsTo(sweep, options.neighbours);
  if (!objections.empty()) return refused(objections);
  if (files.empty()) return {done, sweep.files.front().text, ""};
  problem = writeNewFiles(files, overwrites);
  return problem.empty() ? Outcome{done, "", written} : impossible("sweep", problem);
}

}  // namespace

Outcome runSweep(const SweepCommand& command) {
  SweepOptions options = command.sweep;
  if (!command.neighbourList.empty()) {
    HostList neighbours = readHostList(command.neighbourList);
    if (neighbours.isUnreadable) return impossible("sweep", neighbours.problem);
    if (!neighbours.problem.empty())
      return wrongUsageOf("sweep", "--neighbour: " + neighbours.problem);
    options.neighbours = std::move(neighbours.names);
  }
  const SweepResult sweep = makeSweep(options);
  if (sweep.reason.empty()) return writeSweep(sweep, options, command.overwrites);
  return wrongUsageOf(
      "sweep", sweep.option.empty() ? sweep.reason : "--" + sweep.option + ": " + sweep.reason);
}

}  // namespace marrowbench::ctl
