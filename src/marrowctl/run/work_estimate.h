#ifndef MARROWBENCH_MARROWCTL_RUN_WORK_ESTIMATE_H
#define MARROWBENCH_MARROWCTL_RUN_WORK_ESTIMATE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "settings/test_config.h"

namespace marrowbench::ctl {

/// A test that is to be run.
struct TestWork {
  TestType type = TestType::write;
  std::int64_t iterations = 0;
  std::optional<double> bytes;  ///< of each iteration; nothing: not known
  double pauseMs = 0;           ///< of each iteration
};

/// How long tests will still take, by how long iterations took so far: those of the same test, else
/// those that moved bytes the same way. Files that are far larger than any so far can't be told.
class WorkEstimate {
 public:
  explicit WorkEstimate(std::vector<TestWork> work)
      : tests(std::move(work)), seenOfTest(tests.size()) {}

  /// Iterations of a test took so long together, with all that belongs to them.
  void add(std::size_t test, std::int64_t iterations, double milliseconds);

  /// From now to the end of the last test.
  struct Left {
    double milliseconds = 0;
    bool isLeast = false;  ///< of some tests only their pauses are known
  };

  /// @param test       the one that runs
  /// @param done       its iterations that are done
  /// @param elapsedMs  since the last one of them ended
  [[nodiscard]] Left left(std::size_t test, std::int64_t done, double elapsedMs) const;

 private:
  struct Seen {
    std::int64_t iterations = 0;
    double milliseconds = 0;
    double moving = 0;  // milliseconds without pauses, of iterations whose bytes are known
    double bytes = 0;   // of these
    double largest = 0;
    void add(const Seen& more);
  };

  [[nodiscard]] std::optional<double> iterationMs(std::size_t test) const;
  [[nodiscard]] static bool tells(const Seen& seen, double bytes);

  std::vector<TestWork> tests;
  std::vector<Seen> seenOfTest;
  std::array<Seen, 3> seenOfType;
  Seen seenOfAll;
};

}  // namespace marrowbench::ctl

#endif
