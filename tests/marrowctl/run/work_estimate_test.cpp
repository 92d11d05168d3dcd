#include "marrowctl/run/work_estimate.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl {
namespace {

constexpr double kMib = 1048576;

TestWork work(TestType type, std::int64_t iterations, std::optional<double> bytes,
              double pauseMs = 0) {
  return {type, iterations, bytes, pauseMs};
}

TEST(WorkEstimate, KnowsOnlyPausesBeforeAnythingRan) {
  const WorkEstimate estimate({work(TestType::write, 3, kMib, 500)});
  EXPECT_DOUBLE_EQ(estimate.left(0, 0, 0).milliseconds, 1500);
  EXPECT_TRUE(estimate.left(0, 0, 0).isLeast);
  EXPECT_DOUBLE_EQ(estimate.left(0, 0, 200).milliseconds, 1300);
}

TEST(WorkEstimate, GoesOnAsTheSameTestDid) {
  WorkEstimate estimate({work(TestType::write, 4, kMib)});
  estimate.add(0, 1, 100);
  estimate.add(0, 1, 300);
  EXPECT_DOUBLE_EQ(estimate.left(0, 2, 0).milliseconds, 400);
  EXPECT_FALSE(estimate.left(0, 2, 0).isLeast);
  EXPECT_DOUBLE_EQ(estimate.left(0, 2, 150).milliseconds, 250);
  // One that takes longer counts as all but done.
  EXPECT_DOUBLE_EQ(estimate.left(0, 2, 900).milliseconds, 200);
  EXPECT_DOUBLE_EQ(estimate.left(0, 4, 0).milliseconds, 0);
}

TEST(WorkEstimate, TakesTheSpeedOfTestsOfTheSameKind) {
  WorkEstimate estimate({work(TestType::write, 1, kMib), work(TestType::read, 1, kMib),
                         work(TestType::write, 2, 4 * kMib, 50),
                         work(TestType::copy, 1, 2 * kMib)});
  estimate.add(0, 1, 100);
  estimate.add(1, 1, 20);
  // Writes at 100 ms per MiB and their pauses; copies as all of them.
  EXPECT_DOUBLE_EQ(estimate.left(2, 0, 0).milliseconds, 2 * (400 + 50) + 2 * 60);
}

TEST(WorkEstimate, DoesNotCountPausesAsSpeed) {
  WorkEstimate estimate({work(TestType::write, 1, kMib, 900), work(TestType::write, 1, 2 * kMib)});
  estimate.add(0, 1, 1000);
  EXPECT_DOUBLE_EQ(estimate.left(1, 0, 0).milliseconds, 200);
}

TEST(WorkEstimate, DoesNotGuessWhatItCannotKnow) {
  WorkEstimate estimate(
      {work(TestType::write, 1, kMib / 1024), work(TestType::write, 1, 16 * kMib / 1024),
       work(TestType::write, 1, 17 * kMib / 1024), work(TestType::read, 1, std::nullopt, 70)});
  estimate.add(0, 1, 10);
  EXPECT_FALSE(estimate.left(0, 1, 0).milliseconds == 0);
  EXPECT_TRUE(estimate.left(3, 0, 0).isLeast) << "of no known size";
  EXPECT_DOUBLE_EQ(estimate.left(3, 0, 0).milliseconds, 70);
  EXPECT_TRUE(estimate.left(2, 0, 0).isLeast) << "far larger than any so far";
  EXPECT_DOUBLE_EQ(estimate.left(1, 0, 0).milliseconds, 160 + 70);
}

}  // namespace
}  // namespace marrowbench::ctl
