#ifndef MARROWBENCH_MARROWCTL_TABLE_TEST_NAMES_H
#define MARROWBENCH_MARROWCTL_TABLE_TEST_NAMES_H

#include <string>
#include <vector>

#include "marrowctl/table/result_set.h"

namespace marrowbench::ctl {

/// Parameters in words: "Posix write, 64 KiB chunks, 256 MiB, flush".
[[nodiscard]] std::string nameOfTest(const Parameters& parameters);

/// Sets the names of all tests: the parameters, and where these are the same for several tests
/// their lines, or the names of their files, or their paths, or a number.
void nameTests(std::vector<ResultTest>& tests);

/// What tells the files of tests apart for people: the path that is no memory, both for a copy.
[[nodiscard]] std::string pathsOf(const ResultTest& test);

}  // namespace marrowbench::ctl

#endif
