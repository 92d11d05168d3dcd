#include "marrowctl/table/client_order.h"

#include <cstddef>
#include <map>
#include <queue>
#include <tuple>
#include <utility>

namespace marrowbench::ctl {
namespace {

struct Place {
  std::uint32_t end = 0;
  std::uint32_t line = 0;
  std::uint64_t row = 0;
};

bool isBehind(const Place& a, const Place& b) {
  return std::tie(a.end, a.line, a.row) > std::tie(b.end, b.line, b.row);
}

// The rows that one client has in one table.
struct Part {
  std::uint32_t file = 0;
  std::vector<Place> places;
};

using Parts = std::map<std::uint32_t, std::vector<Part>>;  // of each client

bool hasSeveralTables(const RowStore& store, const std::vector<std::uint32_t>& clients) {
  std::map<std::uint32_t, std::uint32_t> files;
  for (StoredRowCursor rows(store, Unpacking::nothing); rows.next();) {
    const auto [known, isNew] = files.try_emplace(clients[rows.row().series], rows.file());
    if (known->second != rows.file()) return true;
  }
  return false;
}

Parts partsOf(const RowStore& store, const std::vector<std::uint32_t>& clients,
              const std::vector<LineNumbers>& lines) {
  Parts parts;
  for (StoredRowCursor rows(store, Unpacking::nothing); rows.next();) {
    const std::uint32_t site = rows.row().series;
    std::vector<Part>& own = parts[clients[site]];
    if (own.empty() || own.back().file != rows.file()) own.push_back({rows.file(), {}});
    own.back().places.push_back(
        {rows.row().end, lines[site].empty() ? kNone : lines[site].front(), rows.index()});
  }
  return parts;
}

// By the first rows that are left of each part, so that a clock that was set mixes no table's rows.
void merge(const std::vector<Part>& parts, std::vector<std::uint64_t>& order) {
  using Head = std::pair<Place, std::size_t>;  // of a part
  const auto isLater = [](const Head& a, const Head& b) { return isBehind(a.first, b.first); };
  std::priority_queue<Head, std::vector<Head>, decltype(isLater)> heads(isLater);
  std::vector<std::size_t> next(parts.size());
  const auto takeHead = [&](std::size_t part) {
    const std::vector<Place>& places = parts[part].places;
    if (next[part] < places.size()) heads.emplace(places[next[part]++], part);
  };
  for (std::size_t part = 0; part < parts.size(); ++part) takeHead(part);
  while (!heads.empty()) {
    const auto [place, part] = heads.top();
    heads.pop();
    order.push_back(place.row);
    takeHead(part);
  }
}

}  // namespace

std::vector<std::uint64_t> clientOrder(const RowStore& store,
                                       const std::vector<std::uint32_t>& clients,
                                       const std::vector<LineNumbers>& lines) {
  std::vector<std::uint64_t> order;
  if (!hasSeveralTables(store, clients)) return order;
  order.reserve(store.size());
  for (const auto& [client, parts] : partsOf(store, clients, lines)) merge(parts, order);
  return order;
}

}  // namespace marrowbench::ctl
