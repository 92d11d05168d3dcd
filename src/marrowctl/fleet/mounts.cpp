#include "marrowctl/fleet/mounts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace marrowbench::ctl {
namespace {

// Hosts of containers have thousands of them.
constexpr std::size_t kMostShown = 32;

bool isOctal(char byte) { return byte >= '0' && byte <= '7'; }

// The kernel writes blanks, tabs, line feeds and backslashes as "\040".
std::string unescaped(const std::string& field) {
  constexpr std::size_t kDigits = 3;
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const bool isEscape = field[i] == '\\' && i + kDigits < field.size() && isOctal(field[i + 1]) &&
                          isOctal(field[i + 2]) && isOctal(field[i + 3]);
    if (isEscape) {
      text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                (field[i + 3] - '0'));
      i += kDigits;
    } else {
      text += field[i];
    }
  }
  return text;
}

// "server:/export", "//server/share" and "/dev/sda1", but no "tmpfs" and no "cgroup2".
bool isDiskOrShare(const Mount& mount) {
  return mount.source.find_first_of("/:") != std::string::npos || mount.type.starts_with("fuse.");
}

bool liesOn(const std::string& path, const std::string& point) {
  return point == "/" || path == point || path.starts_with(point + "/");
}

// "source point type options 0 0"
std::optional<Mount> readMount(const std::string& line) {
  std::istringstream words(line);
  Mount mount;
  if (!(words >> mount.source >> mount.point >> mount.type >> mount.options)) return std::nullopt;
  mount.source = unescaped(mount.source);
  mount.point = unescaped(mount.point);
  mount.options = unescaped(mount.options);
  return mount;
}

}  // namespace

bool Mount::isShare() const {
  constexpr std::array<std::string_view, 12> kTypes = {"nfs",  "nfs4", "cifs",   "smb3",
                                                       "9p",   "afs",  "beegfs", "ceph",
                                                       "gpfs", "gfs2", "ocfs2",  "virtiofs"};
  if (std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end()) return true;
  // Names of local devices may hold colons, too, but begin with one slash.
  const bool namesServer = source.starts_with("//") ||
                           (!source.starts_with('/') && source.find(":/") != std::string::npos);
  return namesServer || type == "fuse" || type.starts_with("fuse.");
}

bool Mount::has(const std::string& option) const {
  return ("," + options + ",").find("," + option + ",") != std::string::npos;
}

std::vector<Mount> mountsIn(std::istream& list) {
  std::vector<Mount> mounts;
  for (std::string line; std::getline(list, line);) {
    if (std::optional<Mount> mount = readMount(line)) mounts.push_back(std::move(*mount));
  }
  return mounts;
}

std::vector<Mount> mountsHere() {
  std::ifstream list("/proc/self/mounts");
  return mountsIn(list);
}

std::vector<Mount> disksAndShares(std::span<const Mount> mounts,
                                  const std::optional<Mount>& first) {
  std::vector<Mount> shown;
  if (first) shown.push_back(*first);
  for (const Mount& mount : mounts) {
    if (shown.size() < kMostShown && isDiskOrShare(mount) && mount != first) shown.push_back(mount);
  }
  return shown;
}

std::optional<Mount> mountUnder(std::span<const Mount> mounts, const std::string& path) {
  std::optional<Mount> best;
  for (const Mount& mount : mounts) {
    if (!liesOn(path, mount.point)) continue;
    // Of two on one point the later one covers the other.
    if (!best || mount.point.size() >= best->point.size()) best = mount;
  }
  return best;
}

std::optional<Mount> mountOf(const std::string& folder) {
  std::error_code code;
  const std::filesystem::path path = std::filesystem::canonical(folder, code);
  if (code) return std::nullopt;
  return mountUnder(mountsHere(), path.string());
}

}  // namespace marrowbench::ctl
