#include "marrowctl/fleet/probe.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>

#include "marrowctl/fleet/crew.h"
#include "marrowctl/fleet/probe_steps.h"
#include "marrowctl/fleet/stopwatch.h"
#include "paths/host_name.h"
#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

// As long as network clients remember that a name does not exist, and a little more.
constexpr double kSecondsUntilShown = 65;
constexpr double kQuickSecondsUntilShown = 6;

// Host and process are for people; two containers may have both in common.
std::string folderName() {
  std::random_device random;
  const std::string host(hostName().view());
  return ".marrowctl_probe_" + host + "_" + std::to_string(getpid()) + "_" +
         std::to_string(random());
}

// What is still open elsewhere may take a moment to go: an NFS client renames it first.
bool removeFolder(const std::string& path) {
  constexpr useconds_t kPauseMicroseconds = 100'000;
  for (int attempt = 0; attempt < 20; ++attempt) {
    std::error_code code;
    std::filesystem::remove_all(path, code);
    if (access(path.c_str(), F_OK) != 0) return true;
    (void)usleep(kPauseMicroseconds);
  }
  return false;
}

// One after the other, as long as nobody interrupts them.
template <class Step>
void take(const Probe& probe, const char* what, Step step) {
  if (isInterrupted()) return;
  if (probe.asked.progress) probe.asked.progress(what);
  step();
}

void tryAll(const ProbeFolder& folder, Probe& probe) {
  take(probe, "ordinary calls", [&] { tryCalls(folder, probe); });
  take(probe, "the times of files", [&] { probe.times = measureTimes(folder); });
  take(probe, "exclusive create", [&] { probe.races = raceToCreate(folder); });
  take(probe, "rows under the lock", [&] { appendRows(folder, probe); });
  if (folder.second.empty()) return;
  take(probe, "what the second mount sees", [&] { probe.second = watchSecondMount(folder); });
}

std::string problemWith(const std::string& path, int code) {
  return path + ": " + std::strerror(code);
}

// Linux gives the second mount of a share what it has of the first, and with it all that it keeps
// in mind, unless it is told not to. Asked below both folders, where an automounter has mounted.
bool areOneMount(const ProbeFolder& folder) {
  struct stat first {
  }, second{};
  return stat(folder.path.c_str(), &first) == 0 && stat(folder.second.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev;
}

void probeIn(const ProbeFolder& folder, ProbeOutcome& outcome) {
  const ProbeOptions& asked = outcome.probe.asked;
  const double limit = folder.isQuick ? kQuickSecondsUntilShown : kSecondsUntilShown;
  const bool isShown = folder.second.empty() || isShownWithin(folder.second, limit);
  if (isShown) {
    outcome.probe.isOneMount = !folder.second.empty() && areOneMount(folder);
    return tryAll(folder, outcome.probe);
  }
  outcome.problem = asked.second + ": it does not show what is made in " + asked.folder +
                    ": another share, or its files are seen late";
}

}  // namespace

std::optional<double> Delays::median() const {
  if (seen.empty()) return std::nullopt;
  std::vector<double> sorted = seen;
  std::sort(sorted.begin(), sorted.end());
  return sorted[sorted.size() / 2];
}

std::optional<double> Delays::longest() const {
  if (seen.empty() || unseen > 0) return std::nullopt;
  return *std::max_element(seen.begin(), seen.end());
}

ProbeOutcome probeShare(const ProbeOptions& options) {
  ProbeOutcome outcome;
  outcome.probe.asked = options;
  struct stat status {};
  for (const std::string& path : {options.folder, options.second}) {
    if (path.empty()) continue;
    const int code = stat(path.c_str(), &status) != 0 ? errno : 0;
    if (code != 0 || !S_ISDIR(status.st_mode)) {
      outcome.problem = problemWith(path, code != 0 ? code : ENOTDIR);
      return outcome;
    }
  }
  outcome.probe.mount = mountOf(options.folder);
  if (!options.second.empty()) outcome.probe.secondMountPoint = mountOf(options.second);

  // A signal that came meanwhile takes effect when the folder is gone.
  const SignalHold hold;
  const Stopwatch passed;
  const std::string name = "/" + folderName();
  ProbeFolder folder{options.folder + name, "", options.isQuick};
  if (!options.second.empty()) folder.second = options.second + name;
  if (mkdir(folder.path.c_str(), 0777) != 0) {
    outcome.problem = problemWith(options.folder, errno);
    return outcome;
  }
  probeIn(folder, outcome);
  if (!removeFolder(folder.path)) outcome.left = folder.path;
  outcome.probe.seconds = passed.seconds();
  return outcome;
}

}  // namespace marrowbench::ctl
