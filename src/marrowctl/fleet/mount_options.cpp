#include <algorithm>
#include <array>
#include <sstream>
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
  std::string_view options;  // as they are given to mount
  std::string_view reason;
  // One of these, separated by blanks, in the system's list of mounts: it is given already. NFS
  // lists options in words of its own.
  std::string_view listed;
};

constexpr std::string_view kNfsAsksAgain = "lookupcache=pos lookupcache=none noac";
constexpr std::string_view kNfsForgets = "acregmax=1 acregmax=0 noac";
constexpr std::string_view kSmbForgets = "actimeo=1 actimeo=0 acregmax=1 acregmax=0";
// Never listed: programs that show a share by FUSE keep their options to themselves.
constexpr std::string_view kNever;

constexpr std::array<Remedy, 8> kRemedies = {{
    {"nfs", Complaint::lateNewFiles, "lookupcache=positive",
     "a client that has looked for a file in vain asks the server again", kNfsAsksAgain},
    {"nfs", Complaint::lateChanges, "actimeo=1",
     "what a client knows of a file is at most a second old", kNfsForgets},
    {"fuse.sshfs", Complaint::lateNewFiles, "dir_cache=no,direct_io,attr_timeout=0,entry_timeout=0",
     "clients keep nothing in mind of what files there are", kNever},
    {"fuse.sshfs", Complaint::lateChanges, "dir_cache=no,direct_io,attr_timeout=0,entry_timeout=0",
     "clients keep nothing in mind of what files there are", kNever},
    {"fuse.glusterfs", Complaint::lateNewFiles, "negative-timeout=0",
     "a client that has looked for a file in vain asks the server again", kNever},
    {"fuse.glusterfs", Complaint::lateChanges, "attribute-timeout=0,entry-timeout=0",
     "clients ask the server for every file anew", kNever},
    {"cifs", Complaint::lateChanges, "actimeo=1",
     "what a client knows of a file is at most a second old", kSmbForgets},
    {"smb3", Complaint::lateChanges, "actimeo=1",
     "what a client knows of a file is at most a second old", kSmbForgets},
}};

bool isGiven(const Remedy& remedy, const Mount& mount) {
  std::istringstream words{std::string(remedy.listed)};
  for (std::string word; words >> word;) {
    if (mount.has(word)) return true;
  }
  return false;
}

// What is late although there are options against it, they were not given.
std::string textOf(const Remedy& remedy, const Probe& probe) {
  const bool mayBeGiven = remedy.listed.empty() && !probe.seesAnotherClient();
  return std::string(remedy.options) + (mayBeGiven ? ", if not given already: " : ": ") +
         std::string(remedy.reason);
}

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
    if (isGiven(remedy, *mount)) continue;
    const std::string text = textOf(remedy, probe);
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
  }
  return texts;
}

}  // namespace marrowbench::ctl
