#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/support/units.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

struct FileSystem {
  dev_t device = 0;
  std::int64_t freeBytes = 0;
};

std::optional<FileSystem> fileSystemAt(const std::string& folder) {
  struct stat status {};
  struct statvfs space {};
  const std::string path = folder.empty() ? "." : folder;
  if (stat(path.c_str(), &status) != 0 || statvfs(path.c_str(), &space) != 0) return std::nullopt;
  return FileSystem{status.st_dev, static_cast<std::int64_t>(space.f_bavail) *
                                       static_cast<std::int64_t>(space.f_frsize)};
}

// Up to two levels of a folder may still have to be made.
std::optional<FileSystem> fileSystemOf(std::string folder) {
  for (int level = 0; level < 3; ++level) {
    if (const auto found = fileSystemAt(folder)) return found;
    folder = std::string(parentFolder(std::string_view(folder)).view());
  }
  return std::nullopt;
}

struct Need {
  std::int64_t bytes = 0;
  std::int64_t freeBytes = 0;
};

void addShortage(const SurveyedTest& test, const Need& need, FindingList& findings) {
  findings.onField("space-short", test, Field::dest,
                   {fmt::format("the new files in this file system need {}, and {} are free here",
                                shownSize(need.bytes), shownSize(need.freeBytes)),
                    "write smaller files or fewer of them, or make room"});
}

// Told at the first test that writes there.
void addShortages(const Survey& survey, const Totals& totals, FindingList& findings) {
  std::unordered_map<std::string, dev_t> devices;
  std::map<dev_t, Need> needs;
  for (const auto& [folder, bytes] : totals.spaceByFolder) {
    const auto fileSystem = fileSystemOf(folder);
    if (!fileSystem) continue;
    devices[folder] = fileSystem->device;
    Need& need = needs[fileSystem->device];
    need.bytes += bytes;
    need.freeBytes = fileSystem->freeBytes;
  }
  std::erase_if(needs,
                [](const auto& entry) { return entry.second.bytes <= entry.second.freeBytes; });
  for (const SurveyedTest& test : survey.tests) {
    if (needs.empty()) return;
    if (!test.writes()) continue;
    const std::string path = survey.path(test, test.dest(), 0, 0);
    const auto fileSystem = fileSystemOf(std::string(parentFolder(std::string_view(path)).view()));
    const auto need = fileSystem ? needs.find(fileSystem->device) : needs.end();
    if (need == needs.end()) continue;
    addShortage(test, need->second, findings);
    needs.erase(need);
  }
}

void addUnknownSizes(const Survey& survey, const Totals& totals, FindingList& findings) {
  std::vector<std::pair<const PlannedFile*, const PlannedLine*>> lines;
  for (const PlannedFile& file : survey.plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (line.kind == LineKind::test) lines.emplace_back(&file, &line);
    }
  }
  for (const int index : totals.unknownSizes) {
    const auto& [file, line] = lines.at(static_cast<std::size_t>(index));
    findings.onField(
        "size-unknown", *file, *line, Field::source,
        {"the size of the source is not known here, so the totals leave it out",
         "nothing is wrong with that; check where the share is mounted to have it counted"});
  }
}

}  // namespace

void addSizeFindings(const Survey& survey, const Totals& totals, FindingList& findings) {
  addShortages(survey, totals, findings);
  addUnknownSizes(survey, totals, findings);
}

}  // namespace marrowbench::ctl
