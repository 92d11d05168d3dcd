#ifndef MARROWBENCH_FILEACCESS_TIMED_LOOPS_H
#define MARROWBENCH_FILEACCESS_TIMED_LOOPS_H

#include "fileaccess/file_method.h"

/// One timed transfer on a method object. The clock runs from the call to the last close: size
/// query, preallocation, open and close are part of what a user waits for.
///
/// Both clear errorText, set nullPosition and startMs, and on success record bytes and time into
/// stats, which they never reset. close() runs after every successful open(), except when the
/// preallocation after the open fails; the object's destruction closes then.
namespace marrowbench {

/// Copies sourcePath to destPath.
///
/// @return true when all data moved. False with an empty errorText when the source is missing, a
///         folder or empty; false with errorText set for every other failure.
[[nodiscard]] bool runCopy(_fileCopy& method);

/// Reads path into the buffer, at most 1 GiB, or writes fileSize bytes of the buffer to path.
///
/// @return true when all data moved; false with errorText set.
[[nodiscard]] bool runReadWrite(_fileReadWriteBuffer& method);

}  // namespace marrowbench

#endif
