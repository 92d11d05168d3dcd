#ifndef MARROWBENCH_TESTS_HELPERS_PAGES_H
#define MARROWBENCH_TESTS_HELPERS_PAGES_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <string>

namespace marrowbench::test {

/// Fresh memory that tells which of its pages are present.
class Pages {
 public:
  Pages()
      : memory(static_cast<std::byte*>(mmap(nullptr, kCount * kSize, PROT_READ | PROT_WRITE,
                                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;
  ~Pages() { munmap(memory, kCount * kSize); }

  /// A character for each page: "x" present, "." not.
  [[nodiscard]] std::string present() const {
    std::array<decltype(flagOf(mincore)), kCount> flags{};
    EXPECT_EQ(mincore(memory, kCount * kSize, flags.data()), 0);
    std::string text;
    for (const auto flag : flags) text += (flag & 1) != 0 ? 'x' : '.';
    return text;
  }

  static constexpr std::size_t kCount = 8;
  const std::size_t kSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  std::byte* const memory;

 private:
  // Systems differ in the signedness of its flags, and in whether it takes a pointer to const.
  template <class Memory, class Flag>
  static Flag flagOf(int (*)(Memory, std::size_t, Flag*));
};

}  // namespace marrowbench::test

#endif
