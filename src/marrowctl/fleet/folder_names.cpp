#include "marrowctl/fleet/folder_names.h"

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <system_error>

namespace marrowbench::ctl {

int forEachName(const std::string& folder,
                const std::function<void(const std::string& name)>& take) {
  namespace fs = std::filesystem;
  std::error_code code;
  for (fs::directory_iterator entry(folder, code), end; !code && entry != end;
       entry.increment(code)) {
    take(entry->path().filename().string());
  }
  return code.value();
}

const FolderListing& FolderListings::of(const std::string& folder) {
  const auto [place, isNew] = listings.try_emplace(folder);
  FolderListing& listing = place->second;
  if (isNew) {
    listing.code =
        forEachName(folder, [&listing](const std::string& name) { listing.names.push_back(name); });
  }
  return listing;
}

void FolderListings::renew(const std::string& file) {
  std::string path = file;
  for (std::size_t slash = path.rfind('/'); slash != std::string::npos; slash = path.rfind('/')) {
    path.resize(slash);
    if (of(path.empty() ? "/" : path).code != ENOENT) return;
  }
}

}  // namespace marrowbench::ctl
