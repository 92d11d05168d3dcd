#include "paths/folders.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

#include "paths/path_text.h"

namespace marrowbench {
namespace {

FixedString withoutTrailingSlash(const FixedString& path) {
  std::string_view text = path.view();
  if (text.ends_with('/')) text.remove_suffix(1);
  return text;
}

}  // namespace

bool folderExists(const FixedString& path) {
  if (path.length() < 3) return false;
  struct stat status {};
  return stat(withoutTrailingSlash(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool createFolder(const FixedString& path, bool recursive) {
  if (path.length() < 2) return true;
  const FixedString folder = withoutTrailingSlash(path);
  if (folderExists(folder)) return true;
  if (recursive) {
    const FixedString parent = parentFolder(folder);
    if (parent == folder || !createFolder(parent, true)) return false;
  }
  const int result = mkdir(folder.c_str(), 0777);
  // The result, not errno, is compared with EEXIST, and so never equals it: a folder that another
  // client makes in this moment counts as not made here.
  return result == 0 || result == EEXIST;
}

bool provideFolderOf(const FixedString& filePath) {
  const FixedString folder = parentFolder(filePath);
  if (folderExists(folder)) return true;
  if (!folderExists(thirdParentFolder(filePath))) return false;
  // Clients may make the folders in the same moment. Who comes second on the first of two levels
  // still has the other one to make, and who comes second on that goes on too.
  if (!createFolder(folder, true)) (void)createFolder(folder, true);
  return true;
}

ShortText tempFolder() {
  ShortText folder = std::getenv("TEMP");
  if (folder.isEmpty()) folder = std::getenv("TMP");
  if (folder.isEmpty()) folder = "/tmp";
  if (!folder.view().ends_with('/')) folder.append('/');
  return folder;
}

}  // namespace marrowbench
