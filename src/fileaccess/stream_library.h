#ifndef MARROWBENCH_FILEACCESS_STREAM_LIBRARY_H
#define MARROWBENCH_FILEACCESS_STREAM_LIBRARY_H

#include <version>

namespace marrowbench {

/// Whether a file stream without a buffer moves a chunk with one system call. libc++ moves it byte
/// by byte; there a buffer of one chunk takes its place, so that a chunk is moved as one again.
#if defined(_LIBCPP_VERSION)
inline constexpr bool kUnbufferedStreamsMoveChunks = false;
#else
inline constexpr bool kUnbufferedStreamsMoveChunks = true;
#endif

}  // namespace marrowbench

#endif
