#include "main/done_marker.h"

#include <cerrno>
#include <cstdio>

#include "fileaccess/error_text.h"
#include "paths/done_path.h"
#include "paths/folders.h"
#include "paths/host_name.h"
#include "results/text_file_writer.h"
#include "support/console.h"

namespace marrowbench {

void writeDoneMarker(const FixedString& settingsPath) {
  const FixedString folder = doneFolderOf(settingsPath);
  // Cleared, because a folder may be refused for its name's length without a failing system call.
  errno = 0;
  if (!createFolder(folder, true)) {
    const ShortText reason = errnoText(-1);
    std::printf("Unable to create 'Done'-Folder %s: %s.\n", folder.c_str(), reason.c_str());
  }
  const FixedString file = doneFileOf(settingsPath, hostName());
  if (writeTextFile(file, "done", true, true) != 0) {
    const ShortText reason = errnoText(-1);
    std::printf("Unable to write 'Done'-File %s: %s.\n", file.c_str(), reason.c_str());
  }
  flushConsole();
}

}  // namespace marrowbench
