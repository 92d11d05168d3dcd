#include "marrowctl/table/read_results.h"

#include <filesystem>
#include <system_error>

#include "marrowctl/table/assignment.h"
#include "marrowctl/table/host_names.h"
#include "marrowctl/table/number_roles.h"
#include "marrowctl/table/settings_lines.h"
#include "marrowctl/table/sites.h"
#include "marrowctl/table/table_file.h"
#include "marrowctl/table/table_names.h"

namespace marrowbench::ctl {
namespace {

std::uint64_t bytesOf(const std::vector<std::string>& files) {
  std::uint64_t bytes = 0;
  for (const std::string& file : files) {
    std::error_code problem;
    const std::uint64_t size = std::filesystem::file_size(file, problem);
    if (!problem) bytes += size;
  }
  return bytes;
}

std::string readFiles(const ReadOptions& options, ResultSet& set) {
  const TableNames names = tableNames(options.tables);
  if (!names.problem.empty()) return names.problem;
  TableReader::Progress progress;
  if (options.progress) {
    ReadProgress far{0, bytesOf(names.files), 0, names.files.size()};
    progress = [&options, &set, far](std::uint64_t more) mutable {
      far.bytes += more;
      far.table = set.files.size();
      options.progress(far);
    };
  }
  TableReader reader(set, progress, options.choice);
  for (const std::string& file : names.files) {
    std::string problem = reader.read(file);
    if (!problem.empty()) return problem;
  }
  set.store.finish();
  set.readRows = set.store.size();
  if (set.readRows != 0) return {};
  const std::string& first = set.files.front().path;
  return first + (set.files.size() == 1 ? ": no usable row is in it"
                                        : " and the other tables: no usable row is in them");
}

void takeHostsFrom(const ReadOptions& options, ResultSet& set, std::vector<Site>& sites) {
  if (!options.onlyHost.empty()) {
    for (Site& site : sites) site.host = options.onlyHost;
    return;
  }
  if (!options.hostPattern.empty())
    return takeHostsByPattern(options.hostPattern, set.files, sites);
  if (!options.hosts.empty()) return takeHostsByList(options.hosts, set.files, sites);
  takeHostsByTokens(set.files, set.store, sites);
}

// What belongs to the names of clients, where they are told.
KnownTexts knownTexts(const ReadOptions& options, const RowStore& store) {
  if (!options.hostPattern.empty()) return numbersInPattern(options.hostPattern, store);
  return options.hosts.empty() ? KnownTexts() : numbersInList(options.hosts, store);
}

void assign(const ReadOptions& options, ResultSet& set) {
  NumberRoles roles = rolesOf(set.store, knownTexts(options, set.store));
  if (options.plan == nullptr) {
    std::vector<Site> sites = takeSites(set.store, roles);
    takeHostsFrom(options, set, sites);
    assignByPaths(set, sites, options);
    return;
  }
  const SettingsTests settings(*options.plan);
  settings.setRoles(set.store, roles);
  std::vector<Site> sites = takeSites(set.store, roles);
  std::vector<Site> named = sites;
  const std::vector<LineNumbers> lines = settings.matchSites(set, sites);
  // What the templates do not tell. Their own words are no names of clients.
  if (options.hosts.empty() && options.hostPattern.empty()) settings.cutToFolders(lines, named);
  takeHostsFrom(options, set, named);
  for (std::size_t i = 0; i < sites.size(); ++i) {
    if (sites[i].host.empty() || !options.onlyHost.empty()) sites[i].host = named[i].host;
    if (lines[i].empty()) sites[i] = named[i];
  }
  assignBySettings(set, sites, settings, lines, options);
}

}  // namespace

ReadOutcome readResults(const ReadOptions& options) {
  ReadOutcome outcome;
  outcome.problem = readFiles(options, outcome.set);
  if (outcome.problem.empty()) assign(options, outcome.set);
  return outcome;
}

}  // namespace marrowbench::ctl
