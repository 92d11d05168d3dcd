#include "results/exclusive_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "results/sighting.h"

namespace marrowbench {
namespace {

bool holds(const FixedString& path, std::string_view text) {
  // Not blocking: a pipe of that name would wait for a writer.
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return false;
  std::array<char, FixedString::capacity() + 1> found{};
  const ssize_t length = read(descriptor, found.data(), found.size());
  (void)close(descriptor);
  return length >= 0 && std::string_view(found.data(), static_cast<std::size_t>(length)) == text;
}

}  // namespace

ExclusiveFile::~ExclusiveFile() { remove(); }

bool ExclusiveFile::create(const FixedString& filePath) {
  path = filePath;
  text.clear();
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
  return !isOwn(*there);
}

// The times of an owner's file differ where it stood still before it wrote, or what it wrote came
// late to the server; then the text tells.
bool ExclusiveFile::isOwn(const Sighting& there) const {
  if (mayBeOne(*own, there)) return true;
  return own->hasNumberOf(there) && text.length() > 0 && holds(path, text.view());
}

void ExclusiveFile::write(const FixedString& note) {
  text = note;
  (void)std::fwrite(text.c_str(), text.length(), 1, file);
  (void)std::fflush(file);
  // An NFS client sends the text when it is asked for the file's times, which are its last then.
  // Asked by its path, where another's younger file may stand: a GlusterFS client that is asked for
  // the descriptor takes the answer for what is at the path, for a second, although the file is
  // deleted.
  const std::optional<Sighting> written = see(path);
  if (own && written && isOwn(*written)) own = written;
}

bool ExclusiveFile::remove() noexcept {
  if (file == nullptr) return true;
  const bool isOwn = !isReplaced();
  (void)std::fclose(file);
  file = nullptr;
  return !isOwn || unlink(path.c_str()) == 0;
}

}  // namespace marrowbench
