#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <unordered_set>

#include "marrowctl/table/activity.h"
#include "marrowctl/table/host_names.h"
#include "marrowctl/table/number_places.h"

namespace marrowbench::ctl {
namespace {

// More different sets of names are looked at by their rows only.
constexpr std::size_t kMostSets = 50;

using Tokens = std::vector<std::string_view>;
using Names = std::set<std::string_view>;

void appendTokens(std::string_view text, Tokens& tokens) {
  for (;;) {
    const std::size_t end = text.find_first_of(kTokenEnds);
    tokens.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

// Places at which the texts of a family differ; the same number of tokens stands in each.
struct Column {
  std::size_t family = 0;
  std::size_t position = 0;
  Names names;
};

bool isAlike(const Names& a, const Names& b) {
  const Names& fewer = a.size() < b.size() ? a : b;
  const Names& more = a.size() < b.size() ? b : a;
  const auto shared = std::count_if(
      fewer.begin(), fewer.end(), [&more](std::string_view name) { return more.count(name) != 0; });
  return 2 * static_cast<std::size_t>(shared) >= fewer.size();
}

bool hasLetters(const Names& names) {
  return std::any_of(names.begin(), names.end(), [](std::string_view name) {
    return name.find_first_not_of("0123456789") != std::string_view::npos;
  });
}

// Sites or files with their tokens, in families of the same build.
struct Member {
  std::size_t family = 0;
  Tokens tokens;
};

class Columns {
 public:
  std::size_t familyOf(const std::string& key) {
    return families.try_emplace(key, families.size()).first->second;
  }

  void add(std::size_t family, Tokens tokens) { members.push_back({family, std::move(tokens)}); }

  void find() {
    std::vector<std::vector<Names>> names(families.size());
    for (const Member& member : members) {
      names[member.family].resize(member.tokens.size());
      for (std::size_t i = 0; i < member.tokens.size(); ++i)
        names[member.family][i].insert(member.tokens[i]);
    }
    for (std::size_t family = 0; family < names.size(); ++family) {
      for (std::size_t i = 0; i < names[family].size(); ++i) {
        if (names[family][i].size() > 1)
          columns.push_back({family, i, std::move(names[family][i])});
      }
    }
  }

  // Where a family has these names; of several places the last one, which is nearest to the file.
  [[nodiscard]] std::map<std::size_t, std::size_t> placesOf(const Names& wanted) const {
    std::map<std::size_t, std::size_t> places;
    for (const Column& column : columns) {
      if (isAlike(column.names, wanted)) places[column.family] = column.position;
    }
    return places;
  }

  // The name of a member; empty: it has none of them.
  [[nodiscard]] std::string_view nameIn(const Member& member, const Names& wanted,
                                        const std::map<std::size_t, std::size_t>& places) const {
    const auto place = places.find(member.family);
    if (place != places.end()) {
      const std::string_view token = member.tokens[place->second];
      return wanted.count(token) != 0 ? token : std::string_view();
    }
    const auto found =
        std::find_if(member.tokens.rbegin(), member.tokens.rend(),
                     [&wanted](std::string_view token) { return wanted.count(token) != 0; });
    return found == member.tokens.rend() ? std::string_view() : *found;
  }

  std::vector<Member> members;
  std::vector<Column> columns;

 private:
  std::map<std::string, std::size_t> families;
};

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
  HostTokens(const std::vector<ResultFile>& resultFiles, const std::vector<RowKind>& rowKinds,
             std::vector<Site>& allSites)
      : files(resultFiles), kinds(rowKinds), sites(allSites) {}

  void take() {
    const Choice inPaths = choosePaths();
    const Choice inFiles = chooseFiles();
    const bool perFile = !inFiles.names.empty() && !sharesFiles(inPaths);
    if (perFile) nameByFiles(inFiles);
    if (!inPaths.names.empty()) nameByPaths(inPaths, !perFile);
  }

 private:
  Choice choosePaths() {
    for (const Site& site : sites) {
      const std::string key = keyOf(kinds[site.kind].parameters) + skeletonOf(site.source) + ' ' +
                              skeletonOf(site.dest);
      Tokens tokens;
      appendTokens(site.source, tokens);
      appendTokens(site.dest, tokens);
      paths.add(paths.familyOf(key), std::move(tokens));
    }
    paths.find();
    return best(paths, [this](std::size_t member) { return std::vector{&sites[member]}; });
  }

  Choice chooseFiles() {
    std::vector<std::vector<const Site*>> ofFile(files.size());
    for (const Site& site : sites) ofFile[site.file].push_back(&site);
    for (const ResultFile& file : files) {
      Tokens tokens;
      appendTokens(file.path, tokens);
      names.add(names.familyOf(skeletonOf(file.path)), std::move(tokens));
    }
    names.find();
    return best(names, [&ofFile](std::size_t member) { return ofFile[member]; });
  }

  template <class SitesOf>
  Choice best(const Columns& columns, SitesOf sitesOf) {
    std::set<Names> sets;
    for (const Column& column : columns.columns) {
      if (sets.size() < kMostSets) sets.insert(column.names);
    }
    Choice chosen;
    for (const Names& wanted : sets) {
      const auto places = columns.placesOf(wanted);
      Choice choice{wanted, 0};
      Activities activities;
      for (std::size_t i = 0; i < columns.members.size(); ++i) {
        const std::string_view name = columns.nameIn(columns.members[i], wanted, places);
        if (name.empty()) continue;
        for (const Site* site : sitesOf(i)) {
          activities[name].add(*site);
          choice.rows += site->rows;
        }
      }
      if (canBeClients(activities) && isBetter(choice, chosen)) chosen = choice;
    }
    return chosen;
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
      const std::string_view name = paths.nameIn(paths.members[i], inPaths.names, places);
      if (!name.empty()) seen[sites[i].file].insert(name);
    }
    return std::any_of(seen.begin(), seen.end(), [](const Names& each) { return each.size() > 2; });
  }

  void nameByFiles(const Choice& choice) {
    const auto places = names.placesOf(choice.names);
    for (Site& site : sites) {
      site.host = names.nameIn(names.members[site.file], choice.names, places);
    }
  }

  void nameByPaths(const Choice& choice, bool setsHosts) {
    const auto places = paths.placesOf(choice.names);
    std::vector<std::string> hosts(sites.size());
    for (std::size_t i = 0; i < sites.size(); ++i) {
      hosts[i] = paths.nameIn(paths.members[i], choice.names, places);
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

  // The places of each family that hold such names.
  [[nodiscard]] std::vector<std::set<std::size_t>> positionsOf(const Names& wanted) const {
    std::size_t families = 0;
    for (const Member& member : paths.members) families = std::max(families, member.family + 1);
    std::vector<std::set<std::size_t>> positions(families);
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
        const bool isHost =
            masked.count(token) != 0 && (where.empty() || where.count(position) != 0);
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
  const std::vector<RowKind>& kinds;
  std::vector<Site>& sites;
  Columns paths;
  Columns names;
};

}  // namespace

void takeHostsByTokens(const std::vector<ResultFile>& files, const std::vector<RowKind>& kinds,
                       std::vector<Site>& sites) {
  HostTokens(files, kinds, sites).take();
}

}  // namespace marrowbench::ctl
