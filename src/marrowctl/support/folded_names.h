#ifndef MARROWBENCH_MARROWCTL_SUPPORT_FOLDED_NAMES_H
#define MARROWBENCH_MARROWCTL_SUPPORT_FOLDED_NAMES_H

#include <span>
#include <string>

namespace marrowbench::ctl {

/// Which ranges the reader of a folded list takes.
enum class Folding {
  anywhere,  ///< "c[1-9].example.org"
  atTheEnd,  ///< nothing stands behind a range, as Slurm has it
};

/// The names in one list, in their order, neighbours that count up in brackets: "c1,c[02-10]".
/// namesOf() makes the same names of it.
[[nodiscard]] std::string foldedNames(std::span<const std::string> names,
                                      Folding folding = Folding::anywhere);

}  // namespace marrowbench::ctl

#endif
