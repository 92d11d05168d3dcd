#include "results/exclusive_file.h"

#include <unistd.h>

#include <cerrno>

#include "results/sighting.h"

namespace marrowbench {

ExclusiveFile::~ExclusiveFile() { remove(); }

bool ExclusiveFile::create(const FixedString& filePath) {
  path = filePath;
  file = std::fopen(path.c_str(), "wx");
  if (file == nullptr) return false;
  own = seeOpen(fileno(file));
  // Twice: a share may fail once. What is gone already has been taken over since.
  if (!own) own = seeOpen(fileno(file));
  isGone = !own && (errno == ENOENT || errno == ESTALE);
  return true;
}

// What was seen of the file when it was written is compared, not its descriptor now: sshfs answers
// for the descriptor with the file that stands at the path, and GlusterFS not at all once another
// client has deleted the file.
bool ExclusiveFile::isReplaced() const {
  // A file that could not be asked is taken for one's own: it would stay behind otherwise.
  if (!own) return isGone;
  const std::optional<Sighting> there = see(path);
  if (!there) return errno == ENOENT;
  return !mayBeOne(*own, *there);
}

void ExclusiveFile::write(const FixedString& text) {
  (void)std::fwrite(text.c_str(), text.length(), 1, file);
  (void)std::fflush(file);
  // An NFS client sends the text when it is asked for the file's times, which are its last then.
  // Asked by its path, where another's younger file may stand: a GlusterFS client that is asked for
  // the descriptor takes the answer for what is at the path, for a second, although the file is
  // deleted.
  const std::optional<Sighting> written = see(path);
  if (own && written && mayBeOne(*own, *written)) own = written;
}

bool ExclusiveFile::remove() noexcept {
  if (file == nullptr) return true;
  const bool isOwn = !isReplaced();
  (void)std::fclose(file);
  file = nullptr;
  return !isOwn || unlink(path.c_str()) == 0;
}

}  // namespace marrowbench
