#include "marrowctl/fleet/table_follower.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "marrowctl/fleet/open_file.h"
#include "marrowctl/fleet/share_clock.h"
#include "marrowctl/table/byte_mask.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kPiece = 262'144;

ssize_t readAt(int descriptor, std::int64_t position, std::string& bytes) {
  ssize_t count = 0;
  do count = pread(descriptor, bytes.data(), kPiece, position);
  while (count < 0 && errno == EINTR);
  return count;
}

}  // namespace

void TableFollower::follow(const std::function<void(const RowCells&)>& take) {
  // Opened each time: clients of shares ask the server then.
  const OpenFile table(file, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (!table.isOpen() || fstat(table.descriptor(), &status) != 0 || !S_ISREG(status.st_mode))
    return;
  changed = modifiedMs(status);
  if (status.st_size > position) readFrom(table.descriptor(), take);
}

void TableFollower::readFrom(int descriptor, const std::function<void(const RowCells&)>& take) {
  std::string bytes;
  for (;;) {
    // Behind each line there must be bytes that may be read.
    bytes.assign(kPiece + kMaskBytes, '\0');
    const ssize_t count = readAt(descriptor, position, bytes);
    if (count <= 0) return;
    bytes.resize(static_cast<std::size_t>(count));
    const std::size_t taken = takeLines(bytes, take);
    if (taken == 0 && bytes.size() < kPiece) return;
    // A line that is longer than a piece is no row.
    position += static_cast<std::int64_t>(taken == 0 ? bytes.size() : taken);
  }
}

// Returns the bytes of whole lines.
std::size_t TableFollower::takeLines(std::string& bytes,
                                     const std::function<void(const RowCells&)>& take) {
  const std::size_t size = bytes.size();
  bytes.append(kMaskBytes, '\0');
  std::size_t begin = 0;
  for (;;) {
    const std::size_t end = bytes.find('\n', begin);
    if (end == std::string::npos || end >= size) return begin;
    const TextLine line{std::string_view(bytes).substr(begin, end - begin), 0, true, false};
    RowCells cells;
    if (reader.read(line, cells) == LineContent::row) {
      ++rowCount;
      take(cells);
    }
    begin = end + 1;
  }
}

}  // namespace marrowbench::ctl
