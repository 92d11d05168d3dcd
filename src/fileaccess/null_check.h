#ifndef MARROWBENCH_FILEACCESS_NULL_CHECK_H
#define MARROWBENCH_FILEACCESS_NULL_CHECK_H

#include <cstddef>
#include <cstdint>

/// Two checks for data that never arrived, cheap because they look at a few bytes only. Generated
/// test data holds no zero byte; zeros found in a user's own file may be what it holds.
namespace marrowbench {

/// After a chunk: looks at the bytes 1, 50, 100, 150, 200, 250 and 300 places before `end`.
///
/// @param end           one past the chunk's last byte
/// @param length        bytes of the chunk; fewer than 301 are not looked at
/// @param total         bytes moved so far, this chunk included
/// @param nullPosition  becomes total - 300 when all seven are 0; never changed once above 0
void checkChunkForNulls(const std::byte* end, std::int32_t length, std::int64_t total,
                        std::int64_t& nullPosition);

/// After a single transfer: looks at the bytes 1, 100, 200, 300, 400 and 500 places before `end`.
///
/// @param end           one past the last byte
/// @param size          bytes moved; fewer than 500 are not looked at
/// @param nullPosition  becomes size - 500 when all six are 0; never changed once above 0
void checkWholeForNulls(const std::byte* end, std::int32_t size, std::int64_t& nullPosition);

}  // namespace marrowbench

#endif
