#ifndef MARROWBENCH_MARROWCTL_PLAN_ONE_SPELLING_H
#define MARROWBENCH_MARROWCTL_PLAN_ONE_SPELLING_H

#include <string>

namespace marrowbench::ctl {

/// One text for all ways to name a file: from the root, without ".", "..", doubled "/" and "/" at
/// its end. "d.bin", "./d.bin" and "/srv/d.bin" are the same in /srv. Links are not followed. An
/// empty path stays empty.
[[nodiscard]] std::string oneSpelling(const std::string& path);

}  // namespace marrowbench::ctl

#endif
