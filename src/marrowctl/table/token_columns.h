#ifndef MARROWBENCH_MARROWCTL_TABLE_TOKEN_COLUMNS_H
#define MARROWBENCH_MARROWCTL_TABLE_TOKEN_COLUMNS_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Paths that are built alike, token under token, and the places at which they differ.
namespace marrowbench::ctl {

using Tokens = std::vector<std::string_view>;
using Names = std::set<std::string_view>;

/// The parts of a text between "/", "_" and ".", behind those that are there.
void appendTokens(std::string_view text, Tokens& tokens);

/// A text with its tokens; all of a family have as many.
struct Member {
  std::size_t family = 0;
  Tokens tokens;
};

/// A place at which the members of a family differ.
struct Column {
  std::size_t family = 0;
  std::size_t position = 0;
  Names names;
};

class Columns {
 public:
  /// The number of a family, from 0, by what its members have in common.
  std::size_t familyOf(const std::string& key) {
    return families.try_emplace(key, families.size()).first->second;
  }

  void add(std::size_t family, Tokens tokens) { members.push_back({family, std::move(tokens)}); }

  /// Fills `columns`, when all members are there.
  void find();

  /// Where a family has such names; of several places the last one, which is nearest to the file.
  [[nodiscard]] std::map<std::size_t, std::size_t> placesOf(const Names& wanted) const;

  /// The name of a member; empty: it has none of them. @param places  of the names
  [[nodiscard]] static std::string_view nameIn(const Member& member, const Names& wanted,
                                               const std::map<std::size_t, std::size_t>& places);

  std::vector<Member> members;
  std::vector<Column> columns;

 private:
  std::map<std::string, std::size_t> families;
};

/// True when at least half of the fewer names are among the others: a client may have lost all its
/// rows of a test.
[[nodiscard]] bool isAlike(const Names& a, const Names& b);

}  // namespace marrowbench::ctl

#endif
