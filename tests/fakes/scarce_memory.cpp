#include "fakes/scarce_memory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace marrowbench::test {
namespace {

std::size_t& limitOfNew() {
  static std::size_t limit = std::numeric_limits<std::size_t>::max();
  return limit;
}

}  // namespace

ScarceMemory::ScarceMemory(std::size_t limit) { limitOfNew() = limit; }
ScarceMemory::~ScarceMemory() { limitOfNew() = std::numeric_limits<std::size_t>::max(); }

}  // namespace marrowbench::test

void* operator new(std::size_t size) {
  void* memory = size < marrowbench::test::limitOfNew() ? std::malloc(size) : nullptr;
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

// The array forms, too: those of a sanitizer would not call the ones above.
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
