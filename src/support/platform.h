#ifndef MARROWBENCH_SUPPORT_PLATFORM_H
#define MARROWBENCH_SUPPORT_PLATFORM_H

#include <cstddef>
#include <cstdint>

/// What the supported systems do differently, one function per difference. The build picks the
/// file with the bodies; nothing else in the program asks which system it runs on.
namespace marrowbench {

enum class Reservation : std::int32_t {
  contiguous = 2,  ///< one run of blocks, where the system can ask for that
  anywhere = 4,    ///< any blocks
};

/// Reserves disk space for an open file without changing its size.
///
/// @param descriptor  file open for writing
/// @param kind        what is asked for
/// @param length      bytes from the start of the file, 0 or more; 0 reserves nothing
/// @return true when the space is reserved; false with errno set when the system refuses.
[[nodiscard]] bool reserveSpace(int descriptor, Reservation kind, std::int64_t length);

/// Makes pages of memory present, large ones where the system offers them. Their content stays.
///
/// @param memory  memory of the process that may be written to
/// @param size    bytes, not 0; the pages at both ends are taken whole
/// @return false when the system has no such request or refuses it
[[nodiscard]] bool populatePages(std::byte* memory, std::size_t size);

/// The system's text for an errno code.
///
/// @param code  any value
/// @param text  receives the NUL-terminated text, cut to fit
/// @param size  bytes at `text`, at least 1
/// @return false when the system does not know the code; the text is then not to be used.
[[nodiscard]] bool systemErrorText(int code, char* text, std::size_t size);

}  // namespace marrowbench

#endif
