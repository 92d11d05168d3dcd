#ifndef MARROWBENCH_MARROWCTL_CHECK_LOOKALIKES_H
#define MARROWBENCH_MARROWCTL_CHECK_LOOKALIKES_H

#include <cstddef>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace marrowbench::ctl {

/// Tells quickly of most names with kIterationMark that none of their iterations bears one of the
/// names that were added: a fleet has millions of them. "a_[iter]_1" can meet "a_2_1",
/// "a_3[iter]_1" and "a_2_[iter]", but neither "b_[iter]_1" nor "a_[iter]_2".
class Lookalikes {
 public:
  /// @param name  of files that are written, with kIterationMark in one place or without; one with
  ///              several is left out
  void add(std::string_view name);

  /// False: no number in the place of the mark makes the name one of those that were added.
  [[nodiscard]] bool mayMeet(std::string_view name) const;

 private:
  // What stands before and behind a number.
  using Neighbours = std::pair<char, char>;

  std::unordered_set<std::size_t> numbered;  // hashes: names without the number with the mark
  std::unordered_set<std::size_t> plain;     // hashes: names without one of their numbers
  std::set<Neighbours> marked;               // of numbers with the mark
};

}  // namespace marrowbench::ctl

#endif
