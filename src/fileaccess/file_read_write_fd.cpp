#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "fileaccess/file_read_write_methods.h"
#include "fileaccess/preallocate.h"

namespace marrowbench {

_fileReadWriteBuffer_fd::_fileReadWriteBuffer_fd(const _fileReadWriteBuffer& values)
    : _fileReadWriteBuffer(values) {}

_fileReadWriteBuffer_fd::~_fileReadWriteBuffer_fd() { _fileReadWriteBuffer_fd::close(); }

bool _fileReadWriteBuffer_fd::preallocate(const bool& afterOpen) {
  return !afterOpen || preallocateFile(file, parameters.fileSize);
}

bool _fileReadWriteBuffer_fd::open() {
  file = ::open(path.c_str(), isRead ? O_RDONLY : O_WRONLY | O_CREAT, 0666);
  if (file < 0) return openFailed(path, errno);
  return true;
}

void _fileReadWriteBuffer_fd::close() {
  if (file >= 0) (void)::close(file);
  file = -1;
}

bool _fileReadWriteBuffer_fd::transferChunk(std::byte* chunk, const std::int32_t& length) {
  if (length < 0) return isRead ? readFailed(path, EINVAL) : writeFailed(path, EINVAL);
  const auto wanted = static_cast<std::size_t>(length);
  if (isRead) return ::read(file, chunk, wanted) == length || readFailed(path, errno);
  return ::write(file, chunk, wanted) == length || writeFailed(path, errno);
}

}  // namespace marrowbench
