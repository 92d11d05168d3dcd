#include "support/present_memory.h"

#include "support/platform.h"

namespace marrowbench {

void makePresent(std::byte* memory, std::size_t size) {
  if (size == 0 || populatePages(memory, size)) return;
  // No page is smaller. A page that is only read would be a shared page of zeros until it is
  // written to, so each gets its own byte back.
  constexpr std::size_t kSmallestPage = 4096;
  volatile std::byte* bytes = memory;
  for (std::size_t i = 0; i < size; i += kSmallestPage) bytes[i] = bytes[i];
  bytes[size - 1] = bytes[size - 1];
}

}  // namespace marrowbench
