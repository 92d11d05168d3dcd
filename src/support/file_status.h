#ifndef MARROWBENCH_SUPPORT_FILE_STATUS_H
#define MARROWBENCH_SUPPORT_FILE_STATUS_H

#include <cstdint>

#include "support/fixed_string.h"

namespace marrowbench {

/// Asks whether `path` names something that is not a folder (links are followed).
///
/// @param path         path of the file
/// @param modifiedOut  optional: receives the modification time, seconds since the epoch
/// @param sizeOut      optional: receives the size in bytes
/// @return true when stat succeeds and the entry is no folder; otherwise both outputs become 0.
bool fileStatus(const FixedString& path, std::int64_t* modifiedOut = nullptr,
                std::int64_t* sizeOut = nullptr);

}  // namespace marrowbench

#endif
