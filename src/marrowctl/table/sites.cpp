#include "marrowctl/table/sites.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "marrowctl/table/number_places.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMostIterations = INT32_MAX;

// The text of a shape with its numbers filled in, but for iteration and date.
std::string textOfShape(std::string_view shape, const Digits* numbers, const NumberRole* roles) {
  std::string text;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (shape[i] != kNumberMark) {
      text += shape[i];
      continue;
    }
    switch (*roles++) {
      case NumberRole::text: text += textOf(*numbers); break;
      case NumberRole::iteration: text += "[iter]"; break;
      case NumberRole::date:
        // Its second half, behind a "_".
        text += "[date]";
        i += 2;
        ++roles;
        ++numbers;
        break;
    }
    ++numbers;
  }
  return text;
}

class SiteTaker {
 public:
  SiteTaker(RowStore& rowStore, const NumberRoles& numberRoles)
      : store(rowStore), roles(numberRoles), sameKinds(rowStore.kinds.size()) {
    // Kinds that differ in what does not tell sites apart, such as their error, count as one.
    std::unordered_map<std::string, std::uint32_t> known;
    for (std::uint32_t i = 0; i < store.kinds.size(); ++i) {
      const RowKind& kind = store.kinds[i];
      // Settings may have lines that differ in their iterations alone.
      const std::string text = keyOf(kind.parameters) + std::to_string(kind.parameters.iterations) +
                               '\n' + kind.source + '\n' + kind.dest;
      sameKinds[i] = known.try_emplace(text, i).first->second;
    }
  }

  std::vector<Site> take() {
    for (StoredRowCursor rows(store); rows.next();) {
      StoredRow& row = store.at(rows.index());
      row.iteration = -1;
      row.series = siteOf(rows, row);
      count(sites[row.series], row);
    }
    return std::move(sites);
  }

 private:
  std::uint32_t siteOf(const StoredRowCursor& rows, StoredRow& row) {
    const std::vector<NumberRole>& rolesOfKind = roles[row.kind];
    key.resize((2 + rolesOfKind.size()) * sizeof(std::uint64_t));
    char* end = key.data();
    append(rows.file(), end);
    append(sameKinds[row.kind], end);
    for (std::size_t i = 0; i < rolesOfKind.size(); ++i) {
      const Digits number = rows.numbers()[i];
      if (rolesOfKind[i] == NumberRole::text) append(number, end);
      if (rolesOfKind[i] == NumberRole::iteration) {
        row.iteration = static_cast<std::int32_t>(std::min(valueOf(number), kMostIterations));
      }
    }
    key.resize(static_cast<std::size_t>(end - key.data()));
    const auto [known, isNew] = indices.try_emplace(key, static_cast<std::uint32_t>(sites.size()));
    if (isNew) sites.push_back(newSite(rows));
    return known->second;
  }

  [[nodiscard]] Site newSite(const StoredRowCursor& rows) const {
    const RowKind& kind = rows.kind();
    const NumberRole* const rolesOfKind = roles[rows.row().kind].data();
    Site site;
    site.file = rows.file();
    site.kind = rows.row().kind;
    site.source = textOfShape(kind.source, rows.numbers().data(), rolesOfKind);
    site.dest = textOfShape(kind.dest, rows.numbers().data() + kind.sourceNumbers,
                            rolesOfKind + kind.sourceNumbers);
    return site;
  }

  static void count(Site& site, const StoredRow& row) {
    const double seconds = row.milliseconds / 1000.0;
    const double start = row.end - seconds;
    site.firstStart = site.rows == 0 ? start : std::min(site.firstStart, start);
    site.lastEnd = std::max(site.lastEnd, row.end);
    site.busySeconds += seconds;
    ++site.rows;
  }

  static void append(std::uint64_t value, char*& end) {
    std::memcpy(end, &value, sizeof value);
    end += sizeof value;
  }

  RowStore& store;
  const NumberRoles& roles;
  std::vector<std::uint32_t> sameKinds;
  std::vector<Site> sites;
  std::unordered_map<std::string, std::uint32_t> indices;
  std::string key;
};

}  // namespace

std::vector<Site> takeSites(RowStore& store, const NumberRoles& roles) {
  return SiteTaker(store, roles).take();
}

}  // namespace marrowbench::ctl
