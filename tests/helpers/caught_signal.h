#ifndef MARROWBENCH_TESTS_HELPERS_CAUGHT_SIGNAL_H
#define MARROWBENCH_TESTS_HELPERS_CAUGHT_SIGNAL_H

#include <csignal>

namespace marrowbench::test {

/// Counts how often a signal takes effect, instead of letting it end the test. One at a time.
class CaughtSignal {
 public:
  /// @param whenCaught  what to do each time; safe in a signal handler
  explicit CaughtSignal(
      int caughtSignal, void (*whenCaught)() = [] {})
      : number(caughtSignal) {
    caught = 0;
    action = whenCaught;
    before = std::signal(number, [](int) {
      caught = caught + 1;
      action();
    });
  }
  CaughtSignal(const CaughtSignal&) = delete;
  CaughtSignal& operator=(const CaughtSignal&) = delete;
  ~CaughtSignal() { (void)std::signal(number, before); }

  [[nodiscard]] static int count() { return caught; }

 private:
  static inline volatile std::sig_atomic_t caught = 0;
  static inline void (*action)() = nullptr;
  int number;
  void (*before)(int) = nullptr;
};

}  // namespace marrowbench::test

#endif
