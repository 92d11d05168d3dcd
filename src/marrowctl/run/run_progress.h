#ifndef MARROWBENCH_MARROWCTL_RUN_RUN_PROGRESS_H
#define MARROWBENCH_MARROWCTL_RUN_RUN_PROGRESS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/plan/totals.h"
#include "marrowctl/run/console_follower.h"
#include "marrowctl/run/work_estimate.h"

namespace marrowbench::ctl {

/// Says how far a run is: what the plan expects, and what the console tells of it.
class RunProgress {
 public:
  /// @param totals  totalsOf() the plan, which is for this machine alone
  RunProgress(const Plan& plan, const Totals& totals) : estimate({}) { setPlan(plan, totals); }

  /// Of a settings file that is there only now.
  void setPlan(const Plan& plan, const Totals& totals);

  /// Takes note of what the console has told. @param nowMs  milliseconds since the epoch
  void note(const ConsoleFollower& console, std::int64_t nowMs);

  /// "test 2 of 9, iteration 1 of 3, last row 512.3 MiB/s, 12 s left (Posix read)", or what is
  /// waited for. Empty before there is anything to say. @param nowMs  as for note()
  [[nodiscard]] std::string text(std::int64_t nowMs) const;

 private:
  struct Test {
    Method method = Method::posix;
    TestType type = TestType::write;
    std::int64_t iterations = 0;
  };
  // Of a test's iterations that are done, by its file and its number there.
  struct Spent {
    std::int64_t iterations = 0;
    double milliseconds = 0;
  };
  using TestKey = std::pair<std::string, std::int32_t>;

  void noteIterations(const ConsoleFollower& console, std::int64_t nowMs);
  void spend(const TestKey& key, double milliseconds);
  [[nodiscard]] std::optional<std::size_t> indexOf(const TestKey& key) const;
  [[nodiscard]] std::string testText(std::int64_t nowMs) const;
  [[nodiscard]] std::string waitText(std::int64_t nowMs) const;
  [[nodiscard]] std::string minuteText(std::int64_t nowMs) const;
  [[nodiscard]] std::string timeLeft(std::size_t test, std::int64_t nowMs) const;

  std::vector<Test> tests;                        // of all files, in the order of the run
  std::map<std::string, std::size_t> firstTests;  // of each file, by its path
  bool isWhole = false;  // the plan knows all that will be run, and its end
  WorkEstimate estimate;
  std::map<TestKey, Spent> spent;

  // As it was noted last.
  RunPhase phase = RunPhase::starting;
  std::string file;
  std::int32_t configIndex = -1;
  std::int64_t done = 0;
  std::optional<RunIteration> last;
  std::size_t iterations = 0;  // that were noted
  std::int64_t looks = 0;
  std::int64_t begun = 0;     // milliseconds since the epoch: of the phase
  std::int64_t lookedAt = 0;  // the same: when the file was looked for last
  std::int64_t workedAt = 0;  // the same: when the last iteration ended, or the first one began
  std::optional<std::int64_t> notedAt;  // the same: when the console was looked at last
  std::int64_t startTime = 0;           // seconds since the epoch: of the minute that is waited for
};

}  // namespace marrowbench::ctl

#endif
