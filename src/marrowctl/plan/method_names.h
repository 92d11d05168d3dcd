#ifndef MARROWBENCH_MARROWCTL_PLAN_METHOD_NAMES_H
#define MARROWBENCH_MARROWCTL_PLAN_METHOD_NAMES_H

#include <string_view>

#include "settings/test_config.h"

namespace marrowbench::ctl {

/// "write", "read" or "copy".
[[nodiscard]] std::string_view nameOf(TestType type);
/// As settings lines and tables have it: "Posix".
[[nodiscard]] std::string_view nameOf(Method method);

}  // namespace marrowbench::ctl

#endif
