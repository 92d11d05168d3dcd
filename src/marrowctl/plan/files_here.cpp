#include "marrowctl/plan/files_here.h"

#include <sys/stat.h>

namespace marrowbench::ctl {

FilesHere::Entry FilesHere::at(const std::string& path) {
  if (!hasFolderOf(path)) return {};
  const auto [place, isNew] = entries.try_emplace(path);
  if (!isNew) return place->second;
  struct stat status {};
  Entry& entry = place->second;
  entry.exists = stat(path.c_str(), &status) == 0;
  if (entry.exists && !S_ISDIR(status.st_mode)) entry.size = status.st_size;
  return entry;
}

// Clients mostly have folders of their own, which the first test makes: one look for all files.
bool FilesHere::hasFolderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return true;
  const auto [place, isNew] = folders.try_emplace(std::string(path.substr(0, slash + 1)), false);
  struct stat status {};
  if (isNew) place->second = stat(place->first.c_str(), &status) == 0;
  return place->second;
}

}  // namespace marrowbench::ctl
