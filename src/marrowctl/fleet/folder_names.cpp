#include "marrowctl/fleet/folder_names.h"

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

}  // namespace marrowbench::ctl
