#include "marrowctl/table/token_columns.h"

#include <algorithm>
#include <utility>

#include "marrowctl/table/number_roles.h"

namespace marrowbench::ctl {

namespace {

constexpr std::size_t kUsualTokens = 64;

void appendTokens(std::string_view text, Tokens& tokens) {
  const char* begin = text.data();
  const char* const end = begin + text.size();
  for (const char* at = begin; at != end; ++at) {
    if (!endsToken(*at)) continue;
    tokens.emplace_back(begin, at - begin);
    begin = at + 1;
  }
  tokens.emplace_back(begin, end - begin);
}

}  // namespace

Tokens Member::tokens() const {
  Tokens tokens;
  tokens.reserve(kUsualTokens);
  appendTokens(text, tokens);
  if (second.data() != nullptr) appendTokens(second, tokens);
  return tokens;
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
    const Tokens tokens = member.tokens();
    names[member.family].resize(tokens.size());
    for (std::size_t i = 0; i < tokens.size(); ++i) {
      Names& known = names[member.family][i];
      // Most places hold one name.
      if (known.size() != 1 || *known.begin() != tokens[i]) known.insert(tokens[i]);
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
  const Tokens tokens = member.tokens();
  const auto place = places.find(member.family);
  if (place != places.end()) {
    const std::string_view token = tokens[place->second];
    return wanted.contains(token) ? token : std::string_view();
  }
  const auto found =
      std::find_if(tokens.rbegin(), tokens.rend(),
                   [&wanted](std::string_view token) { return wanted.contains(token); });
  return found == tokens.rend() ? std::string_view() : *found;
}

}  // namespace marrowbench::ctl
