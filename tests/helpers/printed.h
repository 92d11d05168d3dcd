#ifndef MARROWBENCH_TESTS_HELPERS_PRINTED_H
#define MARROWBENCH_TESTS_HELPERS_PRINTED_H

#include <gtest/gtest.h>

#include <string>

namespace marrowbench::test {

/// What `action` prints on standard output.
template <class Action>
[[nodiscard]] std::string printedBy(Action action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

}  // namespace marrowbench::test

#endif
