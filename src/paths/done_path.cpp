#include "paths/done_path.h"

#include "paths/path_text.h"

namespace marrowbench {

FixedString doneFolderOf(const FixedString& settingsPath) {
  FixedString folder = parentFolder(settingsPath);
  return folder.append("_").append(nameWithoutExtension(settingsPath)).append("_log");
}

FixedString doneFileOf(const FixedString& settingsPath, const FixedString& host) {
  FixedString file = doneFolderOf(settingsPath);
  return file.append("/done__").append(host);
}

}  // namespace marrowbench
