#include "marrowctl/fleet/machine_facts.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <sstream>
#include <string_view>

namespace marrowbench::ctl {
namespace {

// Hosts of containers have thousands of them.
constexpr std::size_t kMostMounts = 32;

bool isOctal(char byte) { return byte >= '0' && byte <= '7'; }

// The list writes blanks and the like as "\040".
std::string unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape = text[i] == '\\' && i + 3 < text.size() && isOctal(text[i + 1]) &&
                          isOctal(text[i + 2]) && isOctal(text[i + 3]);
    if (!isEscape) {
      plain += text[i];
      continue;
    }
    plain +=
        static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
    i += 3;
  }
  return plain;
}

// "server:/export", "//server/share" and "/dev/sda1", but no "tmpfs" and no "cgroup2".
bool isDiskOrShare(const MountNote& mount) {
  return mount.source.find_first_of("/:") != std::string::npos || mount.type.starts_with("fuse.");
}

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

std::vector<MountNote> mountsIn(std::istream& list) {
  std::vector<MountNote> mounts;
  for (std::string line; mounts.size() < kMostMounts && std::getline(list, line);) {
    std::istringstream words(line);
    std::string source, path, type, options;
    if (!(words >> source >> path >> type >> options)) continue;
    MountNote mount{unescaped(path), type, unescaped(source), options};
    if (isDiskOrShare(mount)) mounts.push_back(std::move(mount));
  }
  return mounts;
}

MachineFacts factsOfThisMachine() {
  MachineFacts facts;
  facts.kernel = kernelOfThisMachine();
  facts.processors = setting(_SC_NPROCESSORS_ONLN);
  facts.memoryBytes = setting(_SC_PHYS_PAGES) * setting(_SC_PAGESIZE);
  std::ifstream list("/proc/self/mounts");
  facts.mounts = mountsIn(list);
  return facts;
}

}  // namespace marrowbench::ctl
