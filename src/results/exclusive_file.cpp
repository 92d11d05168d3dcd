#include "results/exclusive_file.h"

#include <unistd.h>

#include <cerrno>

#include "results/sighting.h"

namespace marrowbench {

ExclusiveFile::~ExclusiveFile() { remove(); }

bool ExclusiveFile::create(const FixedString& filePath) {
  path = filePath;
  file = std::fopen(path.c_str(), "wx");
  return file != nullptr;
}

bool ExclusiveFile::isReplaced() const {
  const std::optional<Sighting> own = seeOpen(fileno(file));
  // A file that can't be asked is taken for one's own: it would stay behind otherwise.
  if (!own) return false;
  const std::optional<Sighting> there = see(path);
  if (!there) return errno == ENOENT;
  return !mayBeOne(*own, *there);
}

void ExclusiveFile::write(const FixedString& text) {
  (void)std::fwrite(text.c_str(), text.length(), 1, file);
  (void)std::fflush(file);
}

bool ExclusiveFile::remove() noexcept {
  if (file == nullptr) return true;
  const bool isOwn = !isReplaced();
  (void)std::fclose(file);
  file = nullptr;
  return !isOwn || unlink(path.c_str()) == 0;
}

}  // namespace marrowbench
