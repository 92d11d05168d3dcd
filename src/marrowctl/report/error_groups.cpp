#include "marrowctl/report/error_groups.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string_view>
#include <unordered_map>

#include "marrowctl/table/host_names.h"

namespace marrowbench::ctl {
namespace {

void replaceAll(std::string& text, std::string_view what, std::string_view with) {
  if (what.empty() || what == "MEMORY") return;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
}

// What a text without a path of the row says is the same for all rows with this key.
std::string keyOf(const RowCursor& rows) {
  const StoredRowCursor& raw = rows.raw();
  const RowKind& kind = raw.kind();
  std::string key = std::to_string(raw.row().kind) + ' ' + std::to_string(rows.row().series);
  const auto paths = raw.numbers().begin();
  const auto errors = paths + static_cast<std::ptrdiff_t>(kind.sourceNumbers + kind.destNumbers);
  for (auto number = errors; number != raw.numbers().end(); ++number) {
    const bool isOfPath = std::find(paths, errors, *number) != errors;
    key += isOfPath ? " -" : ' ' + std::to_string(*number);
  }
  return key;
}

class Groups {
 public:
  explicit Groups(const ResultSet& resultSet) : set(resultSet) {}

  std::vector<ErrorGroup> find() {
    for (RowCursor rows(set); rows.next();) {
      if (!rows.row().hasError) continue;
      const auto [known, isNew] = indices.try_emplace(keyOf(rows), 0);
      if (isNew) known->second = groupOf(textOf(rows));
      count(known->second, rows.row());
    }
    for (std::size_t i = 0; i < groups.size(); ++i) {
      for (const std::uint32_t host : hosts[i]) groups[i].hosts.push_back(set.hosts[host]);
    }
    std::stable_sort(groups.begin(), groups.end(),
                     [](const ErrorGroup& a, const ErrorGroup& b) { return a.rows > b.rows; });
    return std::move(groups);
  }

 private:
  std::string textOf(const RowCursor& rows) const {
    const ResultTest& test = set.tests[rows.row().test];
    std::string text = rows.error();
    replaceAll(text, rows.source(), test.source);
    replaceAll(text, rows.dest(), test.dest);
    return withoutHosts(text, {set.hosts[rows.row().host]});
  }

  std::size_t groupOf(const std::string& text) {
    const auto [known, isNew] = byText.try_emplace(text, groups.size());
    if (isNew) {
      groups.emplace_back().text = text;
      hosts.emplace_back();
    }
    return known->second;
  }

  void count(std::size_t index, const ResultRow& row) {
    ErrorGroup& group = groups[index];
    group.first = group.rows == 0 ? row.end : std::min(group.first, row.end);
    group.last = std::max(group.last, row.end);
    ++group.rows;
    hosts[index].insert(row.host);
  }

  const ResultSet& set;
  std::vector<ErrorGroup> groups;
  std::vector<std::set<std::uint32_t>> hosts;  // of each group
  std::unordered_map<std::string, std::size_t> indices;
  std::unordered_map<std::string, std::size_t> byText;
};

}  // namespace

std::vector<ErrorGroup> errorGroups(const ResultSet& set) { return Groups(set).find(); }

}  // namespace marrowbench::ctl
