#ifndef MARROWBENCH_SUPPORT_SYSTEM_CLOCK_H
#define MARROWBENCH_SUPPORT_SYSTEM_CLOCK_H

#include <cstdint>

/// The only place where time comes from and where the program sleeps. The core library leaves
/// these open: the program links the system's clock, tests link a fake one.
namespace marrowbench {

/// Wall-clock time, whole seconds since the epoch.
[[nodiscard]] std::int64_t systemSeconds();

/// Wall-clock time, whole milliseconds since the epoch.
[[nodiscard]] std::int64_t systemMilliseconds();

/// Sleeps once. @param microseconds  1 to 999,999: some systems refuse a whole second.
void systemSleep(std::uint32_t microseconds);

}  // namespace marrowbench

#endif
