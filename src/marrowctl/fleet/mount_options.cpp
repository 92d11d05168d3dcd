#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "marrowctl/fleet/probe.h"

namespace marrowbench::ctl {
namespace {

constexpr double kLateSeconds = 1.5;

// What is wrong with a share, as far as options of a mount can mend it.
enum class Complaint { lateNewFiles, lateChanges };

struct Remedy {
  std::string_view type;  // of the mount: the beginning of it
  Complaint complaint;
  std::string_view options;  // the first of them tells whether they are given already
  std::string_view reason;
};

constexpr std::array<Remedy, 8> kRemedies = {{
    {"nfs", Complaint::lateNewFiles, "lookupcache=positive",
     "a client that has looked for a file in vain asks the server again"},
    {"nfs", Complaint::lateChanges, "actimeo=1",
     "what a client knows of a file is at most a second old"},
    {"fuse.sshfs", Complaint::lateNewFiles, "dir_cache=no,direct_io,attr_timeout=0,entry_timeout=0",
     "clients keep nothing in mind of what files there are"},
    {"fuse.sshfs", Complaint::lateChanges, "dir_cache=no,direct_io,attr_timeout=0,entry_timeout=0",
     "clients keep nothing in mind of what files there are"},
    {"fuse.glusterfs", Complaint::lateNewFiles, "negative-timeout=0",
     "a client that has looked for a file in vain asks the server again"},
    {"fuse.glusterfs", Complaint::lateChanges, "attribute-timeout=0,entry-timeout=0",
     "clients ask the server for every file anew"},
    {"cifs", Complaint::lateChanges, "actimeo=1",
     "what a client knows of a file is at most a second old"},
    {"smb3", Complaint::lateChanges, "actimeo=1",
     "what a client knows of a file is at most a second old"},
}};

bool isLate(const Delays& delays) {
  const std::optional<double> longest = delays.longest();
  return !longest || *longest > kLateSeconds;
}

// Without a second mount nobody has looked: what usually is the case is said.
bool applies(Complaint complaint, const Probe& probe) {
  if (!probe.seesAnotherClient() || !probe.second) return complaint == Complaint::lateNewFiles;
  if (complaint == Complaint::lateNewFiles) return isLate(probe.second->newFileLookedFor);
  return isLate(probe.second->removedFile) || isLate(probe.second->changedFile);
}

}  // namespace

std::vector<std::string> helpfulOptions(const Probe& probe) {
  std::vector<std::string> texts;
  const std::optional<Mount>& mount = probe.secondMountPoint ? probe.secondMountPoint : probe.mount;
  if (!mount) return texts;
  for (const Remedy& remedy : kRemedies) {
    if (!mount->type.starts_with(remedy.type) || !applies(remedy.complaint, probe)) continue;
    if (mount->has(std::string(remedy.options.substr(0, remedy.options.find(','))))) continue;
    const std::string text = std::string(remedy.options) + ": " + std::string(remedy.reason);
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
  }
  return texts;
}

}  // namespace marrowbench::ctl
