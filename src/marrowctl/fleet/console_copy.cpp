#include "marrowctl/fleet/console_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "marrowctl/fleet/open_file.h"
#include "paths/folders.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kBanner = "Marrowbench ";
constexpr std::string_view kWaiting = "######## Loading/Waiting for settings file '";
constexpr std::string_view kWaitingEnd = "'  ########";
constexpr std::string_view kLoaded = "Config loaded.";

constexpr std::size_t kPiece = 65536;
constexpr std::size_t kLongestLine = 4096;

// 0 at the end, and where it can't be read.
std::size_t readPiece(int descriptor, std::int64_t position, std::size_t most, std::string& piece) {
  piece.resize(most);
  ssize_t count = 0;
  do count = pread(descriptor, piece.data(), piece.size(), position);
  while (count < 0 && errno == EINTR);
  piece.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return piece.size();
}

}  // namespace

ConsoleCopy::~ConsoleCopy() {
  if (printed >= 0) (void)close(printed);
}

int ConsoleCopy::open() {
  std::string name = std::string(tempFolder().view()) + "marrowctl_console_XXXXXX";
  printed = mkstemp(name.data());
  if (printed < 0) return errno;
  (void)fcntl(printed, F_SETFD, FD_CLOEXEC);
  (void)unlink(name.c_str());
  return 0;
}

std::string_view ConsoleCopy::follow() {
  followed += static_cast<std::int64_t>(readPiece(printed, followed, kPiece, piece));
  for (const char byte : piece) {
    if (byte == '\n') {
      takeLine();
      line.clear();
    } else if (line.size() < kLongestLine) {
      line += byte;
    }
  }
  return piece;
}

void ConsoleCopy::takeLine() {
  const std::string_view text = line;
  if (version.empty() && text.starts_with(kBanner)) {
    const std::size_t begin = text.find_first_not_of(' ', kBanner.size());
    if (begin != std::string_view::npos) version = text.substr(begin);
  } else if (text.starts_with(kWaiting) && text.ends_with(kWaitingEnd)) {
    awaitedPath = text.substr(kWaiting.size(), text.size() - kWaiting.size() - kWaitingEnd.size());
  } else if (text.starts_with(kLoaded)) {
    awaitedPath.clear();
  }
}

int ConsoleCopy::save() {
  if (isBegun && saved == followed) return 0;
  OpenFile file(path, O_WRONLY | O_CREAT | (isBegun ? 0 : O_TRUNC));
  if (!file.isOpen()) return errno;
  isBegun = true;
  std::string text;
  while (saved < followed) {
    const auto most = static_cast<std::size_t>(std::min<std::int64_t>(kPiece, followed - saved));
    if (readPiece(printed, saved, most, text) == 0) break;
    if (const int code = file.writeAt(saved, text); code != 0) return code;
    saved += static_cast<std::int64_t>(text.size());
  }
  return file.close();
}

}  // namespace marrowbench::ctl
