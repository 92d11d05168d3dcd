#ifndef MARROWBENCH_MARROWCTL_SUPPORT_PROGRAM_PATH_H
#define MARROWBENCH_MARROWCTL_SUPPORT_PROGRAM_PATH_H

#include <string>

namespace marrowbench::ctl {

/// Where a program is: the name itself when it has a "/", else the first folder of PATH that has
/// such a program. Empty: nowhere.
[[nodiscard]] std::string pathOfProgram(const std::string& name);

/// Where a program is that belongs to another one: beside it, beside what it is a link to, or in
/// PATH. Empty: nowhere.
///
/// @param other  as it was called: a path, or a name that was found in PATH
[[nodiscard]] std::string pathOfNeighbour(const std::string& other, const std::string& name);

}  // namespace marrowbench::ctl

#endif
