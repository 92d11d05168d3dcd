#include "marrowctl/plan/done_markers.h"

#include <cstddef>

#include "marrowctl/plan/template_expander.h"
#include "paths/done_path.h"
#include "paths/folders.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

// The marker's folder stands beside the settings file. The program makes it where there is none,
// but not in a folder whose text, without its "/", has one or two characters: it knows no such
// folder.
bool hasMarkerFolder(const FixedString& settingsPath) {
  const FixedString folder = doneFolderOf(settingsPath);
  const std::size_t above = parentFolder(folder).length();
  constexpr std::size_t kShortestKnown = 4;
  return above < 2 || above >= kShortestKnown || folderExists(folder);
}

}  // namespace

bool leavesMarker(const PlannedFile& file) {
  if (!file.exists || !hasMarkerFolder(folderPathOf(file.path))) return false;
  bool hasTests = false;
  for (const PlannedLine& line : file.lines) {
    if (line.kind != LineKind::test || !line.test.isRun) continue;
    if (line.test.markDone) return true;
    hasTests = true;
  }
  return !hasTests;
}

}  // namespace marrowbench::ctl
