#include <cerrno>

#include "fileaccess/file_read_write_methods.h"

namespace marrowbench {

_fileReadWriteBuffer_FILE::_fileReadWriteBuffer_FILE(const _fileReadWriteBuffer& values)
    : _fileReadWriteBuffer(values) {}

_fileReadWriteBuffer_FILE::~_fileReadWriteBuffer_FILE() { _fileReadWriteBuffer_FILE::close(); }

bool _fileReadWriteBuffer_FILE::open() {
  // In this order on purpose: no file is open yet, so the setting has no effect and every test runs
  // with the library's default buffering.
  setBuffering();
  file = std::fopen(path.c_str(), isRead ? "rb" : "wbx");
  if (file == nullptr) return openFailed(path, errno);
  return true;
}

void _fileReadWriteBuffer_FILE::setBuffering() {
  if (file == nullptr || parameters.systemBuffer < 0) return;
  if (parameters.systemBuffer == 0) {
    (void)std::setvbuf(file, nullptr, _IONBF, 0);
  } else {
    (void)std::setvbuf(file, nullptr, _IOFBF, static_cast<std::size_t>(parameters.chunkSize));
  }
}

void _fileReadWriteBuffer_FILE::close() {
  if (file != nullptr) (void)std::fclose(file);
  file = nullptr;
}

bool _fileReadWriteBuffer_FILE::transferChunk(std::byte* chunk, const std::int32_t& length) {
  if (length < 0) return isRead ? readFailed(path, EINVAL) : writeFailed(path, EINVAL);
  const auto wanted = static_cast<std::size_t>(length);
  if (isRead) {
    return std::fread(chunk, 1, wanted, file) == wanted || readFailed(path, errno);
  }
  const std::size_t written = std::fwrite(chunk, 1, wanted, file);
  const int code = errno;
  if (parameters.flush) (void)std::fflush(file);
  return written == wanted || writeFailed(path, code);
}

}  // namespace marrowbench
