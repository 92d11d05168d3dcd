#ifndef MARROWBENCH_SUPPORT_PRESENT_MEMORY_H
#define MARROWBENCH_SUPPORT_PRESENT_MEMORY_H

#include <cstddef>

namespace marrowbench {

/// Makes memory present, so that its first use in a timed span meets no page fault: for 1 GiB of
/// small pages these take longer than the transfer. The content stays.
///
/// @param memory  memory that may be written to
/// @param size    bytes; no more than their pages are made present
void makePresent(std::byte* memory, std::size_t size);

}  // namespace marrowbench

#endif
