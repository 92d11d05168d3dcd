#ifndef MARROWBENCH_MARROWCTL_FLEET_ROW_OWNERS_H
#define MARROWBENCH_MARROWCTL_FLEET_ROW_OWNERS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/plan/plan.h"
#include "marrowctl/table/path_template.h"

namespace marrowbench::ctl {

/// Tells by its paths which client a row is from, where the lines of settings files name clients in
/// them.
class RowOwners {
 public:
  RowOwners() = default;
  explicit RowOwners(const Plan& plan);

  /// True when each row's paths name its client.
  [[nodiscard]] bool knowAll() const { return isKnownOfAll; }

  /// The client's name, within one of the texts; empty: none of them tells.
  ///
  /// @param table  path of the table in which the row stands
  [[nodiscard]] std::string_view ownerOf(std::string_view source, std::string_view dest,
                                         std::string_view table);

 private:
  [[nodiscard]] static std::string_view hostIn(std::vector<PathTemplate>& templates,
                                               std::string_view path);

  std::vector<PathTemplate> data, tables;  // those that name the client
  bool isKnownOfAll = false;
};

}  // namespace marrowbench::ctl

#endif
