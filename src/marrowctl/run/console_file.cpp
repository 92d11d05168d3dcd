#include "marrowctl/run/console_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "paths/folders.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kPiece = 65536;

}  // namespace

ConsoleFile::ConsoleFile(const std::string& name)
    : name_(std::string(tempFolder().view()) + "marrowbench_" + name + "_XXXXXX.txt") {
  constexpr int kSuffix = 4;
  file = mkstemps(name_.data(), kSuffix);
  if (file < 0) {
    code = errno;
  } else {
    // Not for what else is started.
    (void)fcntl(file, F_SETFD, FD_CLOEXEC);
  }
}

ConsoleFile::~ConsoleFile() {
  if (file >= 0) (void)close(file);
}

std::string ConsoleFile::more() {
  std::string piece(kPiece, '\0');
  // Not by the file's position, which the program shares.
  const ssize_t got = pread(file, piece.data(), piece.size(), read);
  piece.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  read += static_cast<std::int64_t>(piece.size());
  return piece;
}

}  // namespace marrowbench::ctl
