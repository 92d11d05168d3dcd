#ifndef MARROWBENCH_MAIN_DONE_MARKER_H
#define MARROWBENCH_MAIN_DONE_MARKER_H

#include "support/fixed_string.h"

namespace marrowbench {

/// Writes the file "done__HOST" into the done folder, made when missing, so that whoever runs the
/// benchmark sees which clients have finished. Failures are printed and otherwise ignored.
void writeDoneMarker(const FixedString& settingsPath);

}  // namespace marrowbench

#endif
