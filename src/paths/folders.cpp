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
  // On purpose the result is compared, which is never EEXIST, and not errno: a folder that another
  // client makes at this moment counts as not made.
  return result == 0 || result == EEXIST;
}

bool provideFolderOf(const FixedString& filePath) {
  const FixedString folder = parentFolder(filePath);
  if (folderExists(folder)) return true;
  if (!folderExists(thirdParentFolder(filePath))) return false;
  // Other clients may make the folders at the same moment. A client that is late for the first of
  // two levels tries again, as the second is still to be made; one that is late for both goes on.
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
