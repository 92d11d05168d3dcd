#ifndef MARROWBENCH_FILEACCESS_PREALLOCATE_H
#define MARROWBENCH_FILEACCESS_PREALLOCATE_H

#include <cstdint>

namespace marrowbench {

/// Reserves space for a file open for writing, in one run of blocks or else anywhere, and sets
/// its length.
///
/// @param descriptor  the open file
/// @param fileSize    bytes; a negative size fails with EINVAL
/// @return true when both steps succeed; otherwise false with errno set
[[nodiscard]] bool preallocateFile(int descriptor, std::int32_t fileSize);

}  // namespace marrowbench

#endif
