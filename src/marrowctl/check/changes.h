#ifndef MARROWBENCH_MARROWCTL_CHECK_CHANGES_H
#define MARROWBENCH_MARROWCTL_CHECK_CHANGES_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "marrowctl/plan/method_names.h"
#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// A parameter that validation made another one.
struct Change {
  std::string_view field;  ///< name in kSettingsFields
  std::int64_t from = 0;   ///< flags as 0 and 1
  std::int64_t to = 0;
  bool isFlag = false;
  bool isSize = false;  ///< in bytes
  std::string_view why;
};

/// In the order of the fields.
[[nodiscard]] std::vector<Change> changesOf(const PlannedTest& test);

}  // namespace marrowbench::ctl

#endif
