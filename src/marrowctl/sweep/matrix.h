#ifndef MARROWBENCH_MARROWCTL_SWEEP_MATRIX_H
#define MARROWBENCH_MARROWCTL_SWEEP_MATRIX_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/sweep/sweep.h"
#include "settings/test_config.h"

namespace marrowbench::ctl {

/// An option and what is wrong with it.
struct SweepRefusal {
  std::string_view option;
  std::string reason;
};

/// The directions in which a matrix extends, from the outermost loop over its lines to the
/// innermost but one; the methods take turns within.
enum class Axis : std::size_t {
  table,
  log,
  dest,
  source,
  iterations,
  wait,
  buffer,
  flush,
  prealloc,
  size,
  chunk,
  method
};
inline constexpr std::size_t kAxisCount = 12;

/// A value on an axis.
struct AxisValue {
  std::int64_t number = 0;  ///< KiB of sizes; Method of methods; 1 for yes
  std::string text;         ///< of paths
  std::string label;        ///< for the name of a file
};

/// One value on each axis, by index.
using Choice = std::array<std::size_t, kAxisCount>;

/// All that the options ask for.
struct Matrix {
  std::array<std::vector<AxisValue>, kAxisCount> axes;
  std::vector<TestType> kinds;          ///< in the order write, copy, read
  std::vector<std::string> neighbours;  ///< cut at their first "."
  bool readsOwnFiles = true;            ///< no source was named

  [[nodiscard]] const std::vector<AxisValue>& on(Axis axis) const {
    return axes[static_cast<std::size_t>(axis)];
  }
  [[nodiscard]] const AxisValue& at(const Choice& choice, Axis axis) const {
    return on(axis)[choice[static_cast<std::size_t>(axis)]];
  }
  [[nodiscard]] bool has(TestType kind) const;

  /// True when tests of the kind have a value of the axis: a write has no source, and a named
  /// source has the size that it has.
  [[nodiscard]] bool extends(TestType kind, Axis axis) const;
};

/// Takes the lists of all options.
///
/// @return what was refused; none: the matrix is filled
[[nodiscard]] std::optional<SweepRefusal> readMatrix(const SweepOptions& options, Matrix& matrix);

}  // namespace marrowbench::ctl

#endif
