#ifndef MARROWBENCH_TESTS_FUZZ_SOUND_H
#define MARROWBENCH_TESTS_FUZZ_SOUND_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "support/fixed_string.h"

namespace marrowbench::test {

/// Ends the fuzzer with a finding when the rule does not hold.
inline void expect(bool holds) {
  if (!holds) std::abort();
}

/// Length within the capacity and nothing but zeros behind it.
template <class Char, std::size_t Capacity>
void expectSound(const BasicFixedString<Char, Capacity>& text) {
  expect(text.length() <= Capacity);
  const Char* end = text.c_str() + Capacity + 1;
  expect(std::all_of(text.c_str() + text.length(), end, [](Char c) { return c == 0; }));
}

}  // namespace marrowbench::test

#endif
