#include "run/lost_rows.h"

#include <sys/stat.h>

#include <cinttypes>
#include <cstdio>

#include "fileaccess/error_text.h"
#include "support/console.h"

namespace marrowbench {
namespace {

bool isFolder(const FixedString& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

FixedString reasonFor(TableAppend outcome, int code) {
  if (outcome == TableAppend::takenOver) return "the lock was taken over by another client";
  if (outcome == TableAppend::failed) return errnoText(code).view();
  if (code == 0) return "still locked by another client";
  return FixedString("no lock: ").append(errnoText(code));
}

}  // namespace

void LostRows::note(const FixedString& table, TableAppend outcome, int code) {
  const bool isLost = outcome != TableAppend::written;
  if (isLost && isFolder(table)) return;
  ++asked;
  if (!isLost) return;
  ++lost;
  (void)std::fprintf(stderr, "marrowbench: row lost: %s: %s\n", table.c_str(),
                     reasonFor(outcome, code).c_str());
  flushConsole();
}

void LostRows::printSum() const {
  if (lost == 0) return;
  (void)std::fprintf(stderr, "marrowbench: %" PRId64 " of %" PRId64 " rows lost\n", lost, asked);
  flushConsole();
}

}  // namespace marrowbench
