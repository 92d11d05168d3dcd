#include <string>
#include <vector>

#include "marrowctl/main/commands.h"
#include "marrowctl/support/host_list.h"
#include "marrowctl/support/new_files.h"
#include "marrowctl/sweep/sweep.h"

namespace marrowbench::ctl {
namespace {

Outcome writeSweep(const SweepResult& sweep, bool overwrites) {
  std::vector<NewFile> files;
  std::string written;
  for (const SweepFile& file : sweep.files) {
    if (file.name == "-") return {done, file.text, ""};
    files.push_back({file.name, file.text});
    written += "marrowctl sweep: written: " + file.name + "\n";
  }
  const std::string problem = writeNewFiles(files, overwrites);
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
  if (sweep.reason.empty()) return writeSweep(sweep, command.overwrites);
  return wrongUsageOf(
      "sweep", sweep.option.empty() ? sweep.reason : "--" + sweep.option + ": " + sweep.reason);
}

}  // namespace marrowbench::ctl
