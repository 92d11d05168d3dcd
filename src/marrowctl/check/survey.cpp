#include "marrowctl/check/survey.h"

namespace marrowbench::ctl {

Survey::Survey(const Plan& thePlan) : plan(thePlan), clients(plan.hosts.begin(), plan.hosts.end()) {
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (line.kind == LineKind::test && line.test.isRun) tests.push_back({&file, &line});
    }
  }
}

}  // namespace marrowbench::ctl
