#ifndef MARROWBENCH_MARROWCTL_SWEEP_SWEEP_FILES_H
#define MARROWBENCH_MARROWCTL_SWEEP_SWEEP_FILES_H

#include <span>
#include <string>
#include <vector>

#include "marrowctl/sweep/output_name.h"
#include "marrowctl/sweep/sweep.h"
#include "marrowctl/sweep/sweep_lines.h"

namespace marrowbench::ctl {

/// Tests that are run one after the other, in as many files as they need.
struct SweepPart {
  std::string addition;               ///< to the stem of the output: "-pc1"
  std::string next;                   ///< addition of the files behind it; empty: none
  std::vector<std::string> comments;  ///< for the head of its files, a line each
};

/// Adds the files of a part: "NAME.bst", "NAME-2.bst", ..., each with its head, at most 200 tests
/// and a chain line to the next one; the last test of each leaves its marker.
///
/// @param command  the command line, of which control characters are not shown as they are
void addFiles(const OutputName& output, const SweepPart& part, const std::string& command,
              std::span<const SweepLine> lines, std::vector<SweepFile>& files);

}  // namespace marrowbench::ctl

#endif
