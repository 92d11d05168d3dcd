#include "marrowctl/check/check.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "marrowctl/check/output.h"
#include "marrowctl/main/commands.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/plan/totals.h"
#include "marrowctl/support/host_list.h"
#include "marrowctl/support/suggestion.h"
#include "marrowctl/support/terminal.h"

namespace marrowbench::ctl {
namespace {

Outcome explain(const std::string& name, const TextStyle& style) {
  if (const std::optional<std::string> text = explanationOf(name, style)) return {done, *text, ""};
  std::vector<std::string_view> names;
  for (const FindingKind& kind : findingKinds()) names.push_back(kind.name);
  return wrongUsageOf("check", "no finding is called " + name + didYouMean(name, names));
}

void addNew(std::vector<std::string>& hosts, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (std::find(hosts.begin(), hosts.end(), name) == hosts.end()) hosts.push_back(name);
  }
}

// Empty: it can be read, or clients wait for it, as they do for a chained file.
std::string problemOf(const std::string& name) {
  std::error_code code;
  const auto status = std::filesystem::status(name, code);
  if (!std::filesystem::exists(status)) return std::strerror(code ? code.value() : ENOENT);
  if (std::filesystem::is_directory(status)) return {};
  const std::ifstream file(name);
  return file.is_open() ? "" : std::strerror(errno);
}

bool isAskedTwice(const CheckCommand& command, const std::string& name) {
  return std::count(command.files.begin(), command.files.end(), name) +
             std::count(command.hostLists.begin(), command.hostLists.end(), name) >
         1;
}

// What was named and is not there; what it needs besides to plan.
std::optional<Outcome> preparePlan(const CheckCommand& command, PlanOptions& options) {
  if (isAskedTwice(command, "-")) return wrongUsageOf("check", "- is the standard input, once");
  options.files = command.files;
  options.clients = command.clients;
  addNew(options.hosts, command.hosts);
  for (const std::string& list : command.hostLists) {
    const HostList hosts = readHostList(list);
    if (hosts.isUnreadable) return impossible("check", hosts.problem);
    if (!hosts.problem.empty()) return wrongUsageOf("check", "--hosts: " + hosts.problem);
    addNew(options.hosts, hosts.names);
  }
  for (const std::string& name : command.files) {
    if (name == "-") continue;
    if (const std::string problem = problemOf(name); !problem.empty()) {
      return impossible("check", std::string(name).append(": ").append(problem));
    }
  }
  return std::nullopt;
}

std::string textOf(const CheckCommand& command, const Plan& plan, const Totals& totals,
                   const std::vector<Finding>& findings, const TextStyle& style) {
  if (command.format == CheckFormat::gcc) return checkGcc(findings);
  if (command.format == CheckFormat::json) return checkJson(plan, totals, findings);
  return command.isSummary ? checkSummary(totals, findings, style)
                           : checkText(plan, totals, findings, style);
}

}  // namespace

Outcome runCheck(const CheckCommand& command) {
  const TextStyle style = styleOf(stdout);
  if (!command.explained.empty()) return explain(command.explained, style);
  PlanOptions options;
  if (const auto outcome = preparePlan(command, options)) return *outcome;
  const Plan plan = makePlan(options, std::cin);
  if (plan.files.empty()) {
    return impossible("check", command.files.front() + ": no settings file is in this folder");
  }
  const Totals totals = totalsOf(plan);
  const std::vector<Finding> findings = check(plan, totals);
  return {exitStatusOf(findings, command.isStrict), textOf(command, plan, totals, findings, style),
          ""};
}

}  // namespace marrowbench::ctl
