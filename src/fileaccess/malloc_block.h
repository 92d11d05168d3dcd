#ifndef MARROWBENCH_FILEACCESS_MALLOC_BLOCK_H
#define MARROWBENCH_FILEACCESS_MALLOC_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace marrowbench {

/// Memory that begins where a page begins; to be freed with std::free. A large block of malloc's
/// begins 16 bytes later, and transfers to and from it take 1 to 2 % longer.
///
/// @return null with errno set when there is none
[[nodiscard]] inline void* mallocPages(std::size_t bytes) {
  constexpr std::size_t kPage = 4096;
  return std::aligned_alloc(kPage, (bytes + kPage - 1) / kPage * kPage);
}

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};

/// Memory for the bytes of a transfer; null when there was none. Unlike a container's it is not
/// filled with zeros first, which would take time in the timed span.
template <class T>
using MallocBlock = std::unique_ptr<T[], FreeBlock>;

/// @param bytes  0 or less gives null
template <class T>
[[nodiscard]] MallocBlock<T> mallocBlock(std::int32_t bytes) {
  if (bytes <= 0) return nullptr;
  return MallocBlock<T>(static_cast<T*>(mallocPages(static_cast<std::size_t>(bytes))));
}

}  // namespace marrowbench

#endif
