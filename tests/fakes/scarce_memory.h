#ifndef MARROWBENCH_TESTS_FAKES_SCARCE_MEMORY_H
#define MARROWBENCH_TESTS_FAKES_SCARCE_MEMORY_H

#include <cstddef>

namespace marrowbench::test {

/// As long as it lives, operator new has nothing of `limit` bytes and more.
class ScarceMemory {
 public:
  explicit ScarceMemory(std::size_t limit);
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;
  ~ScarceMemory();
};

}  // namespace marrowbench::test

#endif
