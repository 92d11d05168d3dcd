#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "marrowctl/fleet/crew.h"
#include "marrowctl/fleet/probe_steps.h"
#include "marrowctl/fleet/stopwatch.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kBefore = "as it was\n";
constexpr const char* kAfter = "and as it has become\n";

// How many files, and for how long a change is waited for: network clients remember for up to a
// minute what they were told.
struct Effort {
  int files;
  double seconds;
};
constexpr Effort kFull = {3, 65};
constexpr Effort kQuick = {2, 6};

bool exists(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

std::int64_t sizeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_size : -1;
}

void listFolder(const std::string& folder) {
  std::error_code code;
  for (std::filesystem::directory_iterator entry(folder, code), end; !code && entry != end;
       entry.increment(code)) {
  }
}

// A kind of change, and how another client looks for it. Each has a folder of its own: what a
// client asks of one file makes it ask anew for others beside it.
struct Change {
  const char* name;
  bool isThereBefore;
  bool isLookedForBefore;
  bool isListed;
  int (*make)(const std::string& path);
  bool (*isSeen)(const std::string& path);
  Delays SecondMount::*delays;
};

int create(const std::string& path) { return writeProbeFile(path, kAfter); }
int grow(const std::string& path) { return writeProbeFile(path, kAfter, true); }
int removeFile(const std::string& path) { return unlink(path.c_str()); }
int replaceFile(const std::string& path) {
  const std::string draft = path + ".draft";
  const int code = writeProbeFile(draft, kAfter);
  return code != 0 ? code : rename(draft.c_str(), path.c_str());
}

bool isGone(const std::string& path) { return !exists(path); }
bool hasGrown(const std::string& path) {
  return sizeOf(path) > static_cast<std::int64_t>(std::string_view(kBefore).size());
}
bool isReplaced(const std::string& path) { return readProbeFile(path) == kAfter; }

constexpr Change kChanges[] = {
    {"new", false, false, false, create, exists, &SecondMount::newFile},
    {"looked", false, true, false, create, exists, &SecondMount::newFileLookedFor},
    {"listed", false, true, true, create, exists, &SecondMount::newFileListed},
    {"removed", true, true, false, removeFile, isGone, &SecondMount::removedFile},
    {"changed", true, true, false, grow, hasGrown, &SecondMount::changedFile},
    {"replaced", true, true, false, replaceFile, isReplaced, &SecondMount::replacedFile},
};

// One change of one file that the second mount has not shown yet.
struct Awaited {
  const Change* change;
  std::string second;  // its path there
  Stopwatch since;
};

std::string nameOf(int file) { return "/file" + std::to_string(file); }

// The state before all changes, as both mounts show it.
bool prepare(const ProbeFolder& folder, const Effort& effort) {
  for (const Change& change : kChanges) {
    const std::string place = folder.path + "/" + change.name;
    if (mkdir(place.c_str(), 0777) != 0) return false;
    for (int file = 0; change.isThereBefore && file < effort.files; ++file) {
      if (writeProbeFile(place + nameOf(file), kBefore) != 0) return false;
    }
  }
  for (const Change& change : kChanges) {
    const std::string place = folder.second + "/" + change.name;
    if (!isShownWithin(place, effort.seconds)) return false;
    for (int file = 0; change.isThereBefore && file < effort.files; ++file) {
      if (!isShownWithin(place + nameOf(file), effort.seconds)) return false;
      (void)readProbeFile(place + nameOf(file));
    }
  }
  return true;
}

// Right before the changes, so that the second mount has its whole time of memory before it.
void lookBefore(const ProbeFolder& folder, const Effort& effort) {
  for (const Change& change : kChanges) {
    for (int file = 0; change.isLookedForBefore && file < effort.files; ++file)
      (void)exists(folder.second + "/" + change.name + nameOf(file));
  }
}

// What was changed and is not seen yet, and how long the rest took.
class Watch {
 public:
  explicit Watch(SecondMount& secondMount) : result(secondMount) {}

  void add(const Change& change, const std::string& second) {
    awaited.push_back({&change, second, {}});
  }

  void look() {
    std::erase_if(awaited, [this](const Awaited& each) {
      const bool isSeen = each.change->isSeen(each.second);
      if (isSeen) (result.*(each.change->delays)).seen.push_back(each.since.seconds());
      return isSeen;
    });
    if (passed.seconds() - lastListing < 1) return;
    listFolders();
    lastListing = passed.seconds();
  }

  [[nodiscard]] bool isDone() const { return awaited.empty(); }

  void giveUp() {
    for (const Awaited& each : awaited) ++(result.*(each.change->delays)).unseen;
    awaited.clear();
  }

 private:
  void listFolders() const {
    for (const Awaited& each : awaited) {
      if (!each.change->isListed) continue;
      listFolder(std::filesystem::path(each.second).parent_path().string());
      return;
    }
  }

  SecondMount& result;
  std::vector<Awaited> awaited;
  const Stopwatch passed;
  double lastListing = 0;
};

// A look behind each change: the first file would else wait for all others on a share where each
// takes long, and seem to be late.
void makeChanges(const ProbeFolder& folder, const Effort& effort, Watch& watch) {
  for (const Change& change : kChanges) {
    for (int file = 0; file < effort.files && !isInterrupted(); ++file) {
      const std::string name = std::string("/") + change.name + nameOf(file);
      (void)change.make(folder.path + name);
      watch.add(change, folder.second + name);
      watch.look();
    }
  }
}

}  // namespace

bool isShownWithin(const std::string& path, double seconds) {
  constexpr useconds_t kPauseMicroseconds = 10'000;
  const Stopwatch passed;
  while (!exists(path)) {
    if (passed.seconds() > seconds || isInterrupted()) return false;
    (void)usleep(kPauseMicroseconds);
  }
  return true;
}

SecondMount watchSecondMount(const ProbeFolder& folder) {
  constexpr useconds_t kPauseMicroseconds = 2'000;
  const Effort effort = folder.isQuick ? kQuick : kFull;
  SecondMount result;
  result.limitSeconds = effort.seconds;
  if (!prepare(folder, effort)) {
    for (const Change& change : kChanges) (result.*(change.delays)).unseen = effort.files;
    return result;
  }
  lookBefore(folder, effort);
  Watch watch(result);
  makeChanges(folder, effort, watch);
  const Stopwatch passed;
  while (!watch.isDone() && passed.seconds() < effort.seconds && !isInterrupted()) {
    watch.look();
    (void)usleep(kPauseMicroseconds);
  }
  watch.giveUp();
  return result;
}

}  // namespace marrowbench::ctl
