#include "marrowctl/fleet/machine_facts.h"

#include <sys/utsname.h>
#include <unistd.h>

namespace marrowbench::ctl {
namespace {

std::int64_t setting(int name) {
  const long value = sysconf(name);
  return value > 0 ? value : 0;
}

std::string kernelOfThisMachine() {
  utsname names{};
  if (uname(&names) != 0) return {};
  return std::string(names.sysname) + " " + names.release + " " + names.machine;
}

}  // namespace

MachineFacts factsOfThisMachine(const std::string& folder) {
  MachineFacts facts;
  facts.kernel = kernelOfThisMachine();
  facts.processors = setting(_SC_NPROCESSORS_ONLN);
  facts.memoryBytes = setting(_SC_PHYS_PAGES) * setting(_SC_PAGESIZE);
  facts.mounts = disksAndShares(mountsHere(), mountOf(folder));
  return facts;
}

}  // namespace marrowbench::ctl
