#ifndef MARROWBENCH_MARROWCTL_REPORT_LINK_SPEED_H
#define MARROWBENCH_MARROWCTL_REPORT_LINK_SPEED_H

#include <optional>
#include <string_view>

namespace marrowbench::ctl {

/// Bytes per second of a link as it is named: "10G", "2.5G", "100M", "1Gbit/s": bits per second, in
/// powers of ten. Nothing for any other text, and for 0.
[[nodiscard]] std::optional<double> linkSpeedFrom(std::string_view text);

}  // namespace marrowbench::ctl

#endif
