#ifndef MARROWBENCH_MARROWCTL_SUPPORT_HOST_LIST_H
#define MARROWBENCH_MARROWCTL_SUPPORT_HOST_LIST_H

#include <string>
#include <string_view>
#include <vector>

namespace marrowbench::ctl {

/// Names of clients, or why there are none.
struct HostList {
  std::vector<std::string> names;
  std::string problem;        ///< empty: there is none
  bool isUnreadable = false;  ///< the problem is that a file can't be read
};

/// The names of "c1,c[02-10]", in their order: in brackets stand numbers and ranges, separated by
/// ",", which keep their leading zeros. At most 100,000 names, none of them empty.
[[nodiscard]] HostList namesOf(std::string_view list);

/// The names of a list: where a file of that name exists, those in it, separated by blanks and ends
/// of lines, with "#" before comments; else those that the list itself names. "-" is the standard
/// input.
[[nodiscard]] HostList readHostList(const std::string& list);

}  // namespace marrowbench::ctl

#endif
