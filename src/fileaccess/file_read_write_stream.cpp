#include <cerrno>

#include "fileaccess/file_read_write_methods.h"
#include "fileaccess/stream_library.h"

namespace marrowbench {

_fileReadWriteBuffer_stream::_fileReadWriteBuffer_stream(const _fileReadWriteBuffer& values)
    : _fileReadWriteBuffer(values) {}

bool _fileReadWriteBuffer_stream::open() {
  // Before the open: libstdc++ ignores a buffer set on an open file, libc++ takes it either way.
  setInputBuffering();
  if (isRead) {
    input.open(path.c_str(), std::ios::in | std::ios::binary);
    return input.good() || openFailed(path, errno);
  }
  output.open(path.c_str(), std::ios::out | std::ios::binary);
  return output.good() || openFailed(path, errno);
}

// Only the input stream gets the setting: a write test always writes through the library's default
// buffer.
void _fileReadWriteBuffer_stream::setInputBuffering() {
  if (parameters.systemBuffer < 0) return;
  if (parameters.systemBuffer == 0 && kUnbufferedStreamsMoveChunks) {
    input.rdbuf()->pubsetbuf(nullptr, 0);
    return;
  }
  block = mallocBlock<char>(parameters.chunkSize);
  if (block) input.rdbuf()->pubsetbuf(block.get(), parameters.chunkSize);
}

void _fileReadWriteBuffer_stream::close() {
  if (input.is_open()) input.close();
  if (output.is_open()) output.close();
}

bool _fileReadWriteBuffer_stream::transferChunk(std::byte* chunk, const std::int32_t& length) {
  if (length < 0) return isRead ? readFailed(path, EINVAL) : writeFailed(path, EINVAL);
  auto* bytes = reinterpret_cast<char*>(chunk);
  if (isRead) {
    input.read(bytes, length);
    return input.good() || readFailed(path, errno);
  }
  output.write(bytes, length);
  if (parameters.flush) output.flush();
  return output.good() || writeFailed(path, errno);
}

}  // namespace marrowbench
