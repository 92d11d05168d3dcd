#include "paths/log_line.h"

#include <cstdio>

#include "paths/folders.h"
#include "paths/path_text.h"
#include "results/text_file_writer.h"
#include "support/clock.h"
#include "support/console.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

FixedString rowStart(const FixedString& label) {
  if (findIgnoreCase(label, "___") < 0) return "                  ";
  return FixedString(dateText(currentSeconds()).view()).append(": ");
}

void appendToLog(const FixedString& logPath, const FixedString& line) {
  if (!provideFolderOf(logPath)) {
    std::printf("ERROR: Folder does not exists: %s.", parentFolder(logPath).c_str());
    flushConsole();
  }
  (void)writeTextFile(logPath, line.view(), false, false);
}

}  // namespace

void writeLogLine(const FixedString& logPath, const FixedString& label, const FixedString& text1,
                  const FixedString& text2, const FixedString& text3, const FixedString& text4) {
  FixedString line = rowStart(label);
  line.append(label).append(text1).append(text2).append(text3).append(text4);
  if (logPath.isNotEmpty()) appendToLog(logPath, line);
  std::puts(line.c_str());
  flushConsole();
}

}  // namespace marrowbench
