#include "marrowctl/fleet/open_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace marrowbench::ctl {
namespace {

constexpr mode_t kForAll = 0666;
constexpr std::size_t kMostBytes = 1 << 20;

// Of a call that moves bytes: the rest of the text is moved until nothing is left.
template <class Call>
int writeAll(std::string_view text, Call call) {
  while (!text.empty()) {
    const ssize_t moved = call(text);
    if (moved < 0 && errno == EINTR) continue;
    if (moved < 0) return errno;
    text.remove_prefix(static_cast<std::size_t>(moved));
  }
  return 0;
}

}  // namespace

OpenFile::OpenFile(const std::string& path, int flags)
    : number(::open(path.c_str(), flags | O_CLOEXEC, kForAll)) {}

int OpenFile::read(std::string& text) const {
  text.clear();
  char piece[4096];
  while (text.size() < kMostBytes) {
    const ssize_t count = ::read(number, piece, sizeof piece);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) break;
    text.append(piece, static_cast<std::size_t>(count));
  }
  return 0;
}

int OpenFile::writeAt(std::int64_t position, std::string_view text) const {
  return writeAll(text, [this, &position](std::string_view rest) {
    const ssize_t moved = ::pwrite(number, rest.data(), rest.size(), position);
    if (moved > 0) position += moved;
    return moved;
  });
}

int OpenFile::write(std::string_view text) const {
  return writeAll(
      text, [this](std::string_view rest) { return ::write(number, rest.data(), rest.size()); });
}

int OpenFile::close() {
  if (number < 0) return 0;
  const int closing = ::close(number) == 0 ? 0 : errno;
  number = -1;
  return closing;
}

std::string textIn(const std::string& path) {
  std::string text;
  const OpenFile file(path, O_RDONLY);
  if (file.isOpen() && file.read(text) != 0) text.clear();
  return text;
}

}  // namespace marrowbench::ctl
