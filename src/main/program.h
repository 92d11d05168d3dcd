#ifndef MARROWBENCH_MAIN_PROGRAM_H
#define MARROWBENCH_MAIN_PROGRAM_H

#include <span>

namespace marrowbench {

/// The whole life of the process: banner, command line, then for each settings file wait, load,
/// wait for the start minute, run every test, leave the done marker; a chain line leads to the
/// next file.
///
/// @param arguments  as main() got them, the program's name first
/// @return the exit status: -1 without arguments, 1 for a path that does not end in ".bst", else 0
int runProgram(std::span<char* const> arguments);

}  // namespace marrowbench

#endif
