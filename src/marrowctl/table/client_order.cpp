#include "marrowctl/table/client_order.h"

#include <cstddef>
#include <map>
#include <tuple>

#include "marrowctl/table/client_runs.h"

namespace marrowbench::ctl {
namespace {

// Each row is compared with the next ones of all other tables.
constexpr std::size_t kMostTables = 100;

// Numbers of the rows that one client has in one table.
struct Part {
  std::uint32_t file = 0;
  std::vector<std::uint64_t> rows;
};

using Parts = std::vector<Part>;

struct Merged {
  std::vector<std::uint64_t> rows;
  std::uint32_t runs = 0;
};

// What is compared first.
enum class By { time, settings };

// Lower ones come first: two of time, of the settings, or the other way round, then the row.
using Rank = std::tuple<std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t>;

class Merging {
 public:
  Merging(const ResultSet& resultSet, const std::vector<LineNumbers>& linesOfSites)
      : set(resultSet), lines(linesOfSites) {}

  [[nodiscard]] Merged merged(const Parts& parts, By by) const {
    Merged all;
    ClientRuns runs(set.tests);
    std::vector<std::size_t> next(parts.size());
    for (;;) {
      const std::size_t part = lowest(parts, next, by, runs);
      if (part == parts.size()) return all;
      const std::uint64_t index = parts[part].rows[next[part]++];
      const StoredRow& row = set.store.at(index);
      if (!lines[row.series].empty())
        all.runs = runs.next(kClient, lines[row.series], row.iteration).run + 1;
      all.rows.push_back(index);
    }
  }

 private:
  static constexpr std::uint32_t kClient = 0;  // each has followers of its own

  // The part whose next row comes first; their number where no row is left.
  [[nodiscard]] std::size_t lowest(const Parts& parts, const std::vector<std::size_t>& next, By by,
                                   const ClientRuns& runs) const {
    std::size_t found = parts.size();
    Rank least;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if (next[i] == parts[i].rows.size()) continue;
      const Rank rank = rankOf(parts[i].rows[next[i]], by, runs);
      if (found < parts.size() && least <= rank) continue;
      found = i;
      least = rank;
    }
    return found;
  }

  [[nodiscard]] Rank rankOf(std::uint64_t index, By by, const ClientRuns& runs) const {
    const StoredRow& row = set.store.at(index);
    // Rows of other tests disturb nobody.
    if (lines[row.series].empty()) return {0, 0, 0, index};
    const RowPlace place = runs.placeOf(kClient, lines[row.series], row.iteration);
    const std::uint64_t line = std::uint64_t{place.run} << 32U | place.test;
    const auto iteration = static_cast<std::uint64_t>(place.iteration);
    if (by == By::time) return {row.end, line, iteration, index};
    return {line, iteration, row.end, index};
  }

  const ResultSet& set;
  const std::vector<LineNumbers>& lines;
};

bool hasSeveralTables(const std::vector<Site>& sites, const std::vector<std::uint32_t>& clients) {
  std::map<std::uint32_t, std::uint32_t> files;
  for (std::size_t i = 0; i < sites.size(); ++i) {
    const auto [known, isNew] = files.try_emplace(clients[i], sites[i].file);
    if (known->second != sites[i].file) return true;
  }
  return false;
}

std::map<std::uint32_t, Parts> partsOf(const RowStore& store,
                                       const std::vector<std::uint32_t>& clients) {
  std::map<std::uint32_t, Parts> parts;
  for (StoredRowCursor rows(store, Unpacking::nothing); rows.next();) {
    Parts& own = parts[clients[rows.row().series]];
    if (own.empty() || own.back().file != rows.file()) own.push_back({rows.file(), {}});
    own.back().rows.push_back(rows.index());
  }
  return parts;
}

std::vector<std::uint64_t> orderOf(const Parts& parts, const Merging& merging) {
  Merged byTime = merging.merged(parts, By::time);
  if (byTime.runs < 2 || parts.size() > kMostTables) return std::move(byTime.rows);
  Merged bySettings = merging.merged(parts, By::settings);
  return std::move(bySettings.runs < byTime.runs ? bySettings.rows : byTime.rows);
}

}  // namespace

std::vector<std::uint64_t> clientOrder(const ResultSet& set, const std::vector<Site>& sites,
                                       const std::vector<std::uint32_t>& clients,
                                       const std::vector<LineNumbers>& lines) {
  std::vector<std::uint64_t> order;
  if (!hasSeveralTables(sites, clients)) return order;
  order.reserve(set.store.size());
  const Merging merging(set, lines);
  for (const auto& [client, parts] : partsOf(set.store, clients)) {
    const std::vector<std::uint64_t> rows = orderOf(parts, merging);
    order.insert(order.end(), rows.begin(), rows.end());
  }
  return order;
}

}  // namespace marrowbench::ctl
