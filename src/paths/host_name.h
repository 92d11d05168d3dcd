#ifndef MARROWBENCH_PATHS_HOST_NAME_H
#define MARROWBENCH_PATHS_HOST_NAME_H

#include <string_view>

#include "support/fixed_string.h"

namespace marrowbench {

/// The name under which a client reports, from the system's host name: cut at the first ".". A
/// name that begins with "." is not cut. An empty name and "localhost" in any case give
/// "NoHostNameSet_", so that unnamed machines show in the table.
[[nodiscard]] FixedString hostNameFrom(std::string_view rawName);

/// hostNameFrom() of this machine; a failing system call counts as an empty name.
[[nodiscard]] FixedString hostName();

}  // namespace marrowbench

#endif
