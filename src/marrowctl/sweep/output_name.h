#ifndef MARROWBENCH_MARROWCTL_SWEEP_OUTPUT_NAME_H
#define MARROWBENCH_MARROWCTL_SWEEP_OUTPUT_NAME_H

#include <string>

namespace marrowbench::ctl {

/// The settings file that a sweep begins with, in parts: "share/sweep.bst" is "share/", "sweep" and
/// ".bst". Standard output has no folder, is called "sweep" and is written to "-".
struct OutputName {
  std::string folder, stem, suffix;
  bool isStandardOutput = false;

  /// The path of a file of the set: "share/sweep-2.bst" for "-2".
  [[nodiscard]] std::string path(const std::string& addition = {}) const;

  /// The stem with what means something in paths of settings lines turned into "_".
  [[nodiscard]] std::string safeStem() const;

  /// A path of a settings line, of a file or of a folder with "/" at its end, for which the program
  /// finds or makes the folder: it knows none whose text has fewer than three characters, and it
  /// makes one only where it knows the one two levels above, "abc/" at least. "./././" is put
  /// before a relative path that would lack one of them.
  [[nodiscard]] std::string anchored(const std::string& path) const;
};

/// @return why there is none; empty: `name` is filled
[[nodiscard]] std::string readOutputName(const std::string& output, OutputName& name);

}  // namespace marrowbench::ctl

#endif
