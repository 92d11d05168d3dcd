#include "support/file_status.h"

#include <sys/stat.h>

namespace marrowbench {

bool fileStatus(const FixedString& path, std::int64_t* modifiedOut, std::int64_t* sizeOut) {
  struct stat status {};
  const bool isFile = stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
  if (modifiedOut != nullptr) *modifiedOut = isFile ? status.st_mtime : 0;
  if (sizeOut != nullptr) *sizeOut = isFile ? status.st_size : 0;
  return isFile;
}

}  // namespace marrowbench
