#ifndef MARROWBENCH_MARROWCTL_SWEEP_DATA_NAMES_H
#define MARROWBENCH_MARROWCTL_SWEEP_DATA_NAMES_H

#include <string>

#include "marrowctl/sweep/matrix.h"
#include "settings/test_config.h"

/// What the files of a sweep's tests are called. Every write and copy has a file of its own, so
/// that all of them make new files and none finds what another one left.
namespace marrowbench::ctl {

/// The file that a write or copy makes. AnsiC's holds "[iter]" and "[date]", as it refuses a file
/// that exists; those of the others are the same on every run, so that they can be read.
[[nodiscard]] std::string writtenPath(const Matrix& matrix, TestType kind, const Choice& choice);

/// The file that a read or copy takes: the named source, or what the write of the same parameters
/// left; for AnsiC, whose own files nobody can tell afterwards, that of the first other method.
[[nodiscard]] std::string readPath(const Matrix& matrix, const Choice& choice);

/// True when reads or copies have no write in the matrix to take their files from.
[[nodiscard]] bool needsExtraSources(const Matrix& matrix);

/// The file that is written for them, one for each dest, size and number of iterations.
[[nodiscard]] std::string extraSourcePath(const Matrix& matrix, const Choice& choice);

}  // namespace marrowbench::ctl

#endif
