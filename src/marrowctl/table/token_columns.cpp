#include "marrowctl/table/token_columns.h"

#include <algorithm>
#include <utility>

#include "marrowctl/table/number_roles.h"

namespace marrowbench::ctl {

void appendTokens(std::string_view text, Tokens& tokens) {
  for (;;) {
    const std::size_t end = text.find_first_of(kTokenEnds);
    tokens.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

bool isAlike(const Names& a, const Names& b) {
  const Names& fewer = a.size() < b.size() ? a : b;
  const Names& more = a.size() < b.size() ? b : a;
  const auto shared = std::count_if(fewer.begin(), fewer.end(),
                                    [&more](std::string_view name) { return more.contains(name); });
  return 2 * static_cast<std::size_t>(shared) >= fewer.size();
}

void Columns::find() {
  std::vector<std::vector<Names>> names(families.size());
  for (const Member& member : members) {
    names[member.family].resize(member.tokens.size());
    for (std::size_t i = 0; i < member.tokens.size(); ++i) {
      Names& known = names[member.family][i];
      // Most places hold one name.
      if (known.size() != 1 || *known.begin() != member.tokens[i]) known.insert(member.tokens[i]);
    }
  }
  for (std::size_t family = 0; family < names.size(); ++family) {
    for (std::size_t i = 0; i < names[family].size(); ++i) {
      if (names[family][i].size() > 1) columns.push_back({family, i, std::move(names[family][i])});
    }
  }
}

std::map<std::size_t, std::size_t> Columns::placesOf(const Names& wanted) const {
  std::map<std::size_t, std::size_t> places;
  for (const Column& column : columns) {
    if (isAlike(column.names, wanted)) places[column.family] = column.position;
  }
  return places;
}

std::string_view Columns::nameIn(const Member& member, const Names& wanted,
                                 const std::map<std::size_t, std::size_t>& places) {
  const auto place = places.find(member.family);
  if (place != places.end()) {
    const std::string_view token = member.tokens[place->second];
    return wanted.contains(token) ? token : std::string_view();
  }
  const auto found =
      std::find_if(member.tokens.rbegin(), member.tokens.rend(),
                   [&wanted](std::string_view token) { return wanted.contains(token); });
  return found == member.tokens.rend() ? std::string_view() : *found;
}

}  // namespace marrowbench::ctl
