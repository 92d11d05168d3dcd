#ifndef MARROWBENCH_MAIN_DONE_MARKER_H
#define MARROWBENCH_MAIN_DONE_MARKER_H

#include "support/fixed_string.h"

namespace marrowbench {

/// The folder of a settings file's done markers: "tests/_run12_log" for "tests/run12.bst".
[[nodiscard]] FixedString doneFolderOf(const FixedString& settingsPath);

/// Writes the file "done__HOST" into the done folder, made when missing, so that whoever runs the
/// benchmark sees which clients have finished. Failures are printed and otherwise ignored.
void writeDoneMarker(const FixedString& settingsPath);

}  // namespace marrowbench

#endif
