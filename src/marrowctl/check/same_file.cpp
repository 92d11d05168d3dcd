#include "marrowctl/check/same_file.h"

#include <sys/stat.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace marrowbench::ctl {
namespace {

std::size_t nameBegin(const std::string& path) { return path.rfind('/') + 1; }

}  // namespace

// Neither file need exist yet: a line before may write it. Their folders tell then.
bool SameFile::isSame(const std::string& a, const std::string& b) {
  struct stat statusA {};
  struct stat statusB {};
  if (stat(a.c_str(), &statusA) == 0 && stat(b.c_str(), &statusB) == 0) {
    return statusA.st_dev == statusB.st_dev && statusA.st_ino == statusB.st_ino;
  }
  if (std::string_view(a).substr(nameBegin(a)) != std::string_view(b).substr(nameBegin(b)))
    return false;
  const std::string folder = realFolderOf(a);
  return !folder.empty() && folder == realFolderOf(b);
}

const std::string& SameFile::realFolderOf(const std::string& path) {
  const std::string folder = nameBegin(path) == 0 ? "." : path.substr(0, nameBegin(path));
  const auto [place, isNew] = realFolders.try_emplace(folder);
  std::error_code code;
  if (isNew) place->second = std::filesystem::canonical(folder, code).string();
  return place->second;
}

}  // namespace marrowbench::ctl
