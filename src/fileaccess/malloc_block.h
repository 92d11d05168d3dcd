#ifndef MARROWBENCH_FILEACCESS_MALLOC_BLOCK_H
#define MARROWBENCH_FILEACCESS_MALLOC_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace marrowbench {

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};

/// Memory from malloc: unlike a container it is not written to before its user does, so handing it
/// to an interface costs nothing in the timed span. Null when malloc had none.
template <class T>
using MallocBlock = std::unique_ptr<T[], FreeBlock>;

/// @param bytes  0 or less gives null
template <class T>
[[nodiscard]] MallocBlock<T> mallocBlock(std::int32_t bytes) {
  if (bytes <= 0) return nullptr;
  return MallocBlock<T>(static_cast<T*>(std::malloc(static_cast<std::size_t>(bytes))));
}

}  // namespace marrowbench

#endif
