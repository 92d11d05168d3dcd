#ifndef MARROWBENCH_PATHS_DONE_PATH_H
#define MARROWBENCH_PATHS_DONE_PATH_H

#include "support/fixed_string.h"

namespace marrowbench {

/// The folder of a settings file's done markers: "tests/_run12_log" for "tests/run12.bst".
[[nodiscard]] FixedString doneFolderOf(const FixedString& settingsPath);

/// The done marker of a client in that folder: "tests/_run12_log/done__HOST".
[[nodiscard]] FixedString doneFileOf(const FixedString& settingsPath, const FixedString& host);

}  // namespace marrowbench

#endif
