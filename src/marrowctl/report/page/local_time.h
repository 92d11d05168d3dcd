#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_LOCAL_TIME_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_LOCAL_TIME_H

#include <string>

namespace marrowbench::ctl {

/// Seconds since the epoch, moved by the local offset from UTC at that time: taken for UTC, they
/// read as the local time.
[[nodiscard]] double localSeconds(double seconds);

/// "2026-11-16 02:21:29", the local time.
[[nodiscard]] std::string shownTime(double seconds);

/// "UTC+01:00", the local offset at that time.
[[nodiscard]] std::string shownOffset(double seconds);

}  // namespace marrowbench::ctl

#endif
