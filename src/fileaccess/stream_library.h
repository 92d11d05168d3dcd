#ifndef MARROWBENCH_FILEACCESS_STREAM_LIBRARY_H
#define MARROWBENCH_FILEACCESS_STREAM_LIBRARY_H

#include <version>

namespace marrowbench {

/// Whether a file stream without a buffer still moves a chunk with one call of the system. libc++
/// moves it byte by byte; there a buffer of one chunk makes the calls that are meant.
#if defined(_LIBCPP_VERSION)
inline constexpr bool kUnbufferedStreamsMoveChunks = false;
#else
inline constexpr bool kUnbufferedStreamsMoveChunks = true;
#endif

}  // namespace marrowbench

#endif
