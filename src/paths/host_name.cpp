#include "paths/host_name.h"

#include <unistd.h>

#include <array>

namespace marrowbench {

FixedString hostNameFrom(std::string_view rawName) {
  const std::size_t dot = rawName.find('.');
  const FixedString name = dot == 0 ? rawName : rawName.substr(0, dot);
  if (name.isEmpty() || equalsIgnoreCase(name.view(), "localhost")) return "NoHostNameSet_";
  return name;
}

FixedString hostName() {
  // One byte more than the call may fill: a name that takes all of it comes without a NUL.
  std::array<char, 256> raw{};
  if (gethostname(raw.data(), raw.size() - 1) != 0) raw.fill('\0');
  return hostNameFrom(raw.data());
}

}  // namespace marrowbench
