#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>

#include "marrowctl/table/activity.h"
#include "marrowctl/table/host_names.h"
#include "marrowctl/table/number_places.h"
#include "marrowctl/table/row_order.h"
#include "marrowctl/table/token_columns.h"

namespace marrowbench::ctl {
namespace {

// More different sets of names are not looked at: their rows are walked over for each.
constexpr std::size_t kMostSets = 50;
// Dates are known to a second.
constexpr double kUnsureSeconds = 2;

bool hasLetters(const Names& names) {
  return std::any_of(names.begin(), names.end(), [](std::string_view name) {
    return name.find_first_not_of("0123456789") != std::string_view::npos;
  });
}

// A set of names, and how many rows they account for.
struct Choice {
  Names names;
  std::uint64_t rows = 0;
};

bool isBetter(const Choice& a, const Choice& b) {
  if (a.rows != b.rows) return a.rows > b.rows;
  if (a.names.size() != b.names.size()) return a.names.size() > b.names.size();
  return hasLetters(a.names) && !hasLetters(b.names);
}

class HostTokens {
 public:
  HostTokens(const std::vector<ResultFile>& resultFiles, const RowStore& rowStore,
             std::vector<Site>& allSites)
      : files(resultFiles), store(rowStore), sites(allSites) {}

  void take() {
    const Choice inPaths = choosePaths();
    const Choice inFiles = chooseFiles();
    const bool perFile = !inFiles.names.empty() && !sharesFiles(inPaths);
    if (perFile) nameByFiles(inFiles);
    if (!inPaths.names.empty()) {
      nameByPaths(inPaths, !perFile);
    } else if (perFile) {
      maskOwnNames();
    }
  }

 private:
  Choice choosePaths() {
    for (const Site& site : sites) {
      const std::string key = keyOf(store.kinds[site.kind].parameters) + skeletonOf(site.source) +
                              ' ' + skeletonOf(site.dest);
      paths.add({paths.familyOf(key), site.source, site.dest});
    }
    paths.find();
    for (const Member& member : paths.members) families.push_back(member.family);
    return best(
        paths, [this](std::size_t member) { return std::vector{&sites[member]}; },
        [this](const std::vector<std::uint32_t>& named) {
          return orderOf(store, sites, families, named);
        });
  }

  Choice chooseFiles() {
    std::vector<std::vector<const Site*>> ofFile(files.size());
    for (const Site& site : sites) ofFile[site.file].push_back(&site);
    for (const ResultFile& file : files) {
      names.add({names.familyOf(skeletonOf(file.path)), file.path, {}});
    }
    names.find();
    return best(
        names, [&ofFile](std::size_t member) { return ofFile[member]; },
        [this](const std::vector<std::uint32_t>& named) { return orderOfFiles(named); });
  }

  // Each in a table of its own, clients that ran the same test at the same time.
  [[nodiscard]] RowOrder orderOfFiles(const std::vector<std::uint32_t>& named) const {
    std::vector<std::uint32_t> ofSites;
    for (const Site& site : sites) ofSites.push_back(named[site.file]);
    RowOrder order = orderOf(store, sites, families, ofSites);
    std::map<std::size_t, std::map<std::uint32_t, Activity>> tests;
    for (std::size_t i = 0; i < sites.size(); ++i) {
      if (ofSites[i] != kNone) tests[families[i]][ofSites[i]].add(sites[i]);
    }
    for (const auto& [family, clients] : tests) {
      if (clients.size() > 1 && overlap(clients)) order.between = order.rows;
    }
    return order;
  }

  static bool overlap(const std::map<std::uint32_t, Activity>& clients) {
    double latestStart = 0, earliestEnd = clients.begin()->second.lastEnd;
    for (const auto& [name, activity] : clients) {
      latestStart = std::max(latestStart, activity.firstStart);
      earliestEnd = std::min(earliestEnd, activity.lastEnd);
    }
    return earliestEnd - latestStart > kUnsureSeconds;
  }

  // Those that account for most rows come first, so that most are never looked at.
  template <class SitesOf>
  static std::vector<Choice> choicesFrom(const Columns& columns, SitesOf sitesOf) {
    std::map<std::size_t, std::uint64_t> rowsOfFamily;
    for (std::size_t i = 0; i < columns.members.size(); ++i) {
      for (const Site* site : sitesOf(i)) rowsOfFamily[columns.members[i].family] += site->rows;
    }
    std::set<Names> sets;
    for (const Column& column : columns.columns) {
      if (sets.size() < kMostSets) sets.insert(column.names);
    }
    std::vector<Choice> choices;
    for (const Names& wanted : sets) {
      Choice& choice = choices.emplace_back();
      choice.names = wanted;
      for (const auto& [family, position] : columns.placesOf(wanted))
        choice.rows += rowsOfFamily[family];
    }
    std::stable_sort(choices.begin(), choices.end(), isBetter);
    return choices;
  }

  template <class SitesOf, class OrderOf>
  static Choice best(const Columns& columns, SitesOf sitesOf, OrderOf order) {
    for (Choice& choice : choicesFrom(columns, sitesOf)) {
      const auto places = columns.placesOf(choice.names);
      Activities activities;
      std::vector<std::uint32_t> named(columns.members.size(), kNone);
      std::unordered_map<std::string_view, std::uint32_t> numbers;
      for (std::size_t i = 0; i < columns.members.size(); ++i) {
        const std::string_view name = Columns::nameIn(columns.members[i], choice.names, places);
        if (name.empty()) continue;
        const auto next = static_cast<std::uint32_t>(numbers.size());
        named[i] = numbers.try_emplace(name, next).first->second;
        for (const Site* site : sitesOf(i)) activities[name].add(*site);
      }
      const RowOrder rows = order(named);
      if (rows.keepsLinesWhole() && canBeClients(activities, rows.mixesNames()))
        return std::move(choice);
    }
    return {};
  }

  // One table holds rows of several clients.
  [[nodiscard]] bool sharesFiles(const Choice& inPaths) const {
    std::vector<Activity> ofFile(files.size());
    for (const Site& site : sites) ofFile[site.file].add(site);
    const bool isBusy = std::any_of(ofFile.begin(), ofFile.end(), [](const Activity& activity) {
      return !activity.canBeOneClient();
    });
    if (isBusy || inPaths.names.empty()) return isBusy;
    // Neighbours read each other's files, so that a client's rows have two names; not more.
    std::vector<Names> seen(files.size());
    const auto places = paths.placesOf(inPaths.names);
    for (std::size_t i = 0; i < sites.size(); ++i) {
      const std::string_view name = Columns::nameIn(paths.members[i], inPaths.names, places);
      if (!name.empty()) seen[sites[i].file].insert(name);
    }
    return std::any_of(seen.begin(), seen.end(), [](const Names& each) { return each.size() > 2; });
  }

  void nameByFiles(const Choice& choice) {
    const auto places = names.placesOf(choice.names);
    for (Site& site : sites) {
      site.host = Columns::nameIn(names.members[site.file], choice.names, places);
    }
  }

  void nameByPaths(const Choice& choice, bool setsHosts) {
    const auto places = paths.placesOf(choice.names);
    std::vector<std::string> hosts(sites.size());
    for (std::size_t i = 0; i < sites.size(); ++i) {
      hosts[i] = Columns::nameIn(paths.members[i], choice.names, places);
    }
    // What the names point into changes from here on.
    std::set<std::string, std::less<>> masked(choice.names.begin(), choice.names.end());
    std::vector<std::set<std::size_t>> positions = positionsOf(choice.names);
    for (std::size_t i = 0; i < sites.size(); ++i) {
      if (setsHosts && sites[i].host.empty()) sites[i].host = hosts[i];
      const std::set<std::size_t>& where = positions[paths.members[i].family];
      mask(sites[i], masked, where);
    }
  }

  // The paths of a client have its name as its table has.
  void maskOwnNames() {
    for (Site& site : sites) {
      if (!site.host.empty()) mask(site, {site.host}, {});
    }
  }

  // The places of each family that hold such names.
  [[nodiscard]] std::vector<std::set<std::size_t>> positionsOf(const Names& wanted) const {
    std::size_t count = 0;
    for (const Member& member : paths.members) count = std::max(count, member.family + 1);
    std::vector<std::set<std::size_t>> positions(count);
    for (const Column& column : paths.columns) {
      if (isAlike(column.names, wanted)) positions[column.family].insert(column.position);
    }
    return positions;
  }

  static void mask(Site& site, const std::set<std::string, std::less<>>& masked,
                   const std::set<std::size_t>& where) {
    std::size_t position = 0;
    for (std::string* const path : {&site.source, &site.dest}) {
      std::string result;
      std::string_view rest = *path;
      for (;;) {
        const std::size_t end = rest.find_first_of(kTokenEnds);
        const std::string_view token = rest.substr(0, end);
        const bool isHost = (where.empty() || where.contains(position)) && masked.contains(token);
        result += isHost ? "[host]" : token;
        ++position;
        if (end == std::string_view::npos) break;
        result += rest[end];
        rest.remove_prefix(end + 1);
      }
      *path = result;
    }
  }

  const std::vector<ResultFile>& files;
  const RowStore& store;
  std::vector<Site>& sites;
  std::vector<std::size_t> families;  // of sites
  Columns paths;
  Columns names;
};

}  // namespace

void takeHostsByTokens(const std::vector<ResultFile>& files, const RowStore& store,
                       std::vector<Site>& sites) {
  HostTokens(files, store, sites).take();
}

}  // namespace marrowbench::ctl
