#include "marrowctl/sweep/sweep_objections.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "marrowctl/check/check.h"
#include "marrowctl/plan/make_plan.h"

namespace marrowbench::ctl {
namespace {

// As if the files stood at their places.
std::vector<Finding> findingsFor(const SweepResult& sweep, std::vector<std::string> hosts) {
  const SweepFile& first = sweep.files.front();
  PlanOptions options{{first.name}, std::move(hosts), 0};
  for (const SweepFile& file : sweep.files) options.texts.emplace(file.name, file.text);
  std::istringstream standardInput(first.text);
  return check(makePlan(options, standardInput));
}

void addNew(std::vector<Finding>& objections, std::vector<Finding> findings) {
  for (Finding& finding : findings) {
    const bool isKnown =
        std::any_of(objections.begin(), objections.end(),
                    [&finding](const Finding& known) { return known.name == finding.name; });
    if (!isKnown && finding.severity != Severity::note) objections.push_back(std::move(finding));
  }
}

}  // namespace

std::vector<Finding> objectionsTo(const SweepResult& sweep,
                                  const std::vector<std::string>& neighbours) {
  std::vector<Finding> objections;
  addNew(objections, findingsFor(sweep, neighbours));
  // The chain of a plan is that of its first client; what the others read is their neighbour's.
  for (std::size_t i = 1; i < neighbours.size(); ++i) {
    addNew(objections,
           findingsFor(sweep, {neighbours[i], neighbours[(i + 1) % neighbours.size()]}));
  }
  return objections;
}

}  // namespace marrowbench::ctl
