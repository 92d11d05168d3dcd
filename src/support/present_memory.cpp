#include "support/present_memory.h"

#include "support/platform.h"

namespace marrowbench {

void makePresent(std::byte* memory, std::size_t size) {
  if (size == 0 || populatePages(memory, size)) return;
  // No page is smaller. In each page a byte is written over itself: reading alone would show a page
  // of zeros that is shared, and make none present.
  constexpr std::size_t kSmallestPage = 4096;
  volatile std::byte* bytes = memory;
  for (std::size_t i = 0; i < size; i += kSmallestPage) bytes[i] = bytes[i];
  bytes[size - 1] = bytes[size - 1];
}

}  // namespace marrowbench
