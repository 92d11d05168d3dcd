#ifndef MARROWBENCH_TESTS_HELPERS_PRINTED_H
#define MARROWBENCH_TESTS_HELPERS_PRINTED_H

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace marrowbench::test {

/// What `action` prints on standard output.
template <class Action>
[[nodiscard]] std::string printedBy(Action action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

/// How often `part` stands in `text`.
[[nodiscard]] inline std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace marrowbench::test

#endif
