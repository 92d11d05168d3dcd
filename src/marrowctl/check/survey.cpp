#include "marrowctl/check/survey.h"

#include <algorithm>

namespace marrowbench::ctl {

Survey::Survey(const Plan& thePlan) : plan(thePlan), clients(plan.hosts.begin(), plan.hosts.end()) {
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (line.kind == LineKind::test && line.test.isRun) tests.push_back({&file, &line});
    }
  }
}

std::vector<std::int32_t> iterationsToAsk(const SurveyedTest& test, const PathPattern& pattern) {
  // With this many looked at, one more tells nothing.
  constexpr std::int32_t kMost = 100;
  if (!pattern.has(kIterationMark)) return {0};
  const std::int32_t last = test.test().lastIteration();
  std::vector<std::int32_t> iterations;
  for (std::int32_t i = 0; i <= std::min(last, kMost); ++i) iterations.push_back(i);
  if (last > kMost) iterations.push_back(last);
  return iterations;
}

}  // namespace marrowbench::ctl
