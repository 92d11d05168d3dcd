#include "marrowctl/main/table_options.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

#include "marrowctl/plan/make_plan.h"
#include "marrowctl/support/host_list.h"
#include "marrowctl/table/host_names.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMostMinutes = 525'600;  // a year
constexpr std::int64_t kMinute = 60;

bool isSettingsFile(const std::string& word) {
  return std::filesystem::path(word).extension() == ".bst";
}

}  // namespace

void addTableOptions(OptionSet& options, TableOptions& values) {
  options.names("--settings", values.settings, "FILE",
                "Settings file that was run; may be given again");
  options.names("--hosts", values.hostLists, "LIST",
                "Clients that there should be: a file of names, or names as c1,c[02-10]");
  options.text("--host-pattern", values.hostPattern, "REGEX",
               "Its first group is the client, in destination, source or the table's name");
  options.number("--gap", values.gapMinutes, 1, kMostMinutes, "MINUTES",
                 "Without a row, after which a new run begins; default: 30");
  options.flag("--all-runs", values.allRuns, "Take all runs of the tables together");
}

void takeSettings(std::vector<std::string>& words, TableOptions& values) {
  const auto first = std::stable_partition(
      words.begin(), words.end(), [](const std::string& word) { return !isSettingsFile(word); });
  values.settings.insert(values.settings.end(), first, words.end());
  words.erase(first, words.end());
}

std::optional<Outcome> prepareSource(const std::string& subcommand, const TableOptions& values,
                                     TableSource& source) {
  for (const std::string& list : values.hostLists) {
    const HostList hosts = readHostList(list);
    if (hosts.isUnreadable) return impossible(subcommand, hosts.problem);
    if (!hosts.problem.empty()) return wrongUsageOf(subcommand, "--hosts: " + hosts.problem);
    // As clients name themselves.
    for (const std::string& name : hosts.names)
      source.hosts.emplace_back(hostNameFrom(name).view());
  }
  if (!values.hostPattern.empty()) {
    const std::string problem = problemOfPattern(values.hostPattern);
    if (!problem.empty()) return wrongUsageOf(subcommand, "--host-pattern: " + problem);
  }
  if (values.settings.empty()) return std::nullopt;
  for (const std::string& name : values.settings) {
    std::error_code code;
    if (!std::filesystem::exists(name, code))
      return impossible(subcommand, name + ": " + std::strerror(code ? code.value() : ENOENT));
  }
  source.plan = makePlan({values.settings, source.hosts, 0}, std::cin);
  return std::nullopt;
}

ReadOptions readOptionsOf(const TableOptions& values, const TableSource& source,
                          std::vector<std::string> tables) {
  ReadOptions options;
  options.tables = std::move(tables);
  options.plan = source.plan ? &*source.plan : nullptr;
  options.hosts = source.hosts;
  options.hostPattern = values.hostPattern;
  options.gapSeconds = values.gapMinutes * kMinute;
  options.allRuns = values.allRuns;
  return options;
}

}  // namespace marrowbench::ctl
