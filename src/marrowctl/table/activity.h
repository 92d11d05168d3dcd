#ifndef MARROWBENCH_MARROWCTL_TABLE_ACTIVITY_H
#define MARROWBENCH_MARROWCTL_TABLE_ACTIVITY_H

#include <string_view>
#include <unordered_map>

#include "marrowctl/table/sites.h"

/// When what was going on: a client does one thing at a time, which tells names of clients from
/// names of files.
namespace marrowbench::ctl {

/// Rows that may be those of one client.
struct Activity {
  double firstStart = 0, lastEnd = 0;  ///< seconds since the epoch
  double busySeconds = 0;              ///< of all rows together
  std::uint64_t rows = 0;

  void add(const Site& site);

  /// False when rows must have run at the same time.
  [[nodiscard]] bool canBeOneClient() const;
};

using Activities = std::unordered_map<std::string_view, Activity>;

/// Whether the rows behind these names can be those of as many clients: each of them does one thing
/// at a time, and they are not the work of one client that turns from one to the next.
///
/// @param mixed  their rows are known to have run at the same time
[[nodiscard]] bool canBeClients(const Activities& activities, bool mixed);

}  // namespace marrowbench::ctl

#endif
