#include "marrowctl/fleet/drafts.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "marrowctl/fleet/open_file.h"

namespace marrowbench::ctl {
namespace {

std::string problemWith(const std::string& path, int code) {
  return path + ": " + std::strerror(code);
}

// Hidden, and no settings file by its name: nobody takes it for the finished file. The same for
// all: of those that prepare a run at the same time one alone can have made it.
std::string draftOf(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  return path.substr(0, name) + "." + path.substr(name) + ".draft";
}

// Clients run as other users, too: whatever this one's umask is, they read it. Shares without such
// rights refuse it, and need none.
void letAllRead(const OpenFile& file) {
  constexpr mode_t kReadableByAll = S_IRUSR | S_IRGRP | S_IROTH;
  struct stat status {};
  if (fstat(file.descriptor(), &status) != 0) return;
  const mode_t wanted = (status.st_mode | kReadableByAll) & 07777;
  if (wanted != (status.st_mode & 07777)) (void)fchmod(file.descriptor(), wanted);
}

int writeText(const std::string& path, int flags, const std::string& text) {
  OpenFile file(path, O_WRONLY | flags);
  if (!file.isOpen()) return errno;
  letAllRead(file);
  const int code = file.writeAt(0, text);
  const int closing = file.close();
  return code != 0 ? code : closing;
}

}  // namespace

Drafts::~Drafts() {
  for (const Draft& draft : drafts) (void)std::remove(draft.path.c_str());
}

std::string Drafts::write(const std::map<std::string, std::string>& texts) {
  for (const auto& [place, text] : texts) {
    const std::string path = draftOf(place);
    const int code = writeText(path, O_CREAT | O_EXCL, text);
    // It stays: its owner is to publish it.
    if (code == EEXIST)
      return path +
             " is there: somebody else is publishing this run. If nobody is, delete the "
             ".draft files beside it";
    drafts.push_back({path, place, text});
    if (code != 0) return problemWith(place, code);
  }
  return {};
}

std::string Drafts::publish(const std::string& last) {
  std::stable_partition(drafts.begin(), drafts.end(),
                        [&last](const Draft& draft) { return draft.place != last; });
  std::vector<std::string> placed;
  while (!drafts.empty()) {
    const Draft& draft = drafts.front();
    // Written once more for its time: what is newer than the file was done since it appeared.
    int code = draft.place == last ? writeText(draft.path, 0, draft.text) : 0;
    if (code == 0 && std::rename(draft.path.c_str(), draft.place.c_str()) != 0) code = errno;
    if (code != 0) {
      // Half of it would stand in the way of the next try.
      for (const std::string& place : placed) (void)std::remove(place.c_str());
      return problemWith(draft.place, code);
    }
    placed.push_back(draft.place);
    drafts.erase(drafts.begin());
  }
  return {};
}

}  // namespace marrowbench::ctl
