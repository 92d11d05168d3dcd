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

/// One or two texts; all of a family have as many tokens. The tokens of a hundred thousand members
/// would take more memory than their rows, so that they are taken anew where they are looked at.
struct Member {
  std::size_t family = 0;
  std::string_view text, second;

  /// The parts of the texts between "/", "_" and ".".
  [[nodiscard]] Tokens tokens() const;
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

  /// @param member  its texts must stay where they are
  void add(const Member& member) { members.push_back(member); }

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
