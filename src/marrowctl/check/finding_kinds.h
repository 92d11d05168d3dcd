#ifndef MARROWBENCH_MARROWCTL_CHECK_FINDING_KINDS_H
#define MARROWBENCH_MARROWCTL_CHECK_FINDING_KINDS_H

#include <span>

#include "marrowctl/check/finding.h"

/// The parts of findingKinds(), in their order. Each explanation is a story, an example and what to
/// write instead.
namespace marrowbench::ctl {

[[nodiscard]] std::span<const FindingKind> kindsAboutLines();
[[nodiscard]] std::span<const FindingKind> kindsAboutFiles();
[[nodiscard]] std::span<const FindingKind> kindsAboutNumbers();
[[nodiscard]] std::span<const FindingKind> kindsAboutFleets();

}  // namespace marrowbench::ctl

#endif
