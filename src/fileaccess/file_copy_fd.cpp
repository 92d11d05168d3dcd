#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "fileaccess/file_copy_methods.h"
#include "fileaccess/preallocate.h"

namespace marrowbench {

_fileCopy_fd::_fileCopy_fd(const _fileCopy& values) : _fileCopy(values) {}

_fileCopy_fd::~_fileCopy_fd() { _fileCopy_fd::close(); }

bool _fileCopy_fd::preallocate(const bool& afterOpen) {
  return !afterOpen || preallocateFile(dest, parameters.fileSize);
}

bool _fileCopy_fd::open() {
  source = ::open(sourcePath.c_str(), O_RDONLY, 0666);
  if (source < 0) return openFailed(sourcePath, errno);
  dest = ::open(destPath.c_str(), O_WRONLY | O_CREAT, 0666);
  if (dest < 0) {
    const int code = errno;
    close();
    return openFailed(destPath, code);
  }
  return true;
}

void _fileCopy_fd::close() {
  if (source >= 0) (void)::close(source);
  if (dest >= 0) (void)::close(dest);
  source = -1;
  dest = -1;
}

bool _fileCopy_fd::transferChunk(std::byte* buffer, const std::int32_t& length) {
  if (buffer == nullptr) return singleChunkRefused();
  if (length < 0) return readFailed(sourcePath, EINVAL);
  const auto wanted = static_cast<std::size_t>(length);
  const ssize_t got = ::read(source, buffer, wanted);
  if (got != length) return readFailed(sourcePath, errno);
  if (::write(dest, buffer, wanted) != length) return writeFailed(destPath, errno);
  return true;
}

}  // namespace marrowbench
