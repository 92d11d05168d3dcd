#include <cerrno>

#include "fileaccess/file_copy_methods.h"
#include "fileaccess/stream_library.h"

namespace marrowbench {

_fileCopy_stream::_fileCopy_stream(const _fileCopy& values) : _fileCopy(values) {}

bool _fileCopy_stream::open() {
  // Before the opens: libstdc++ ignores a buffer set on an open file, libc++ takes it either way.
  setBuffering();
  source.open(sourcePath.c_str(), std::ios::in | std::ios::binary);
  if (!source) return openFailed(sourcePath, errno);
  dest.open(destPath.c_str(), std::ios::out | std::ios::binary);
  if (dest) return true;
  const int code = errno;
  source.close();
  return openFailed(destPath, code);
}

void _fileCopy_stream::setBuffering() {
  if (parameters.systemBuffer < 0) return;
  if (parameters.systemBuffer == 0 && kUnbufferedStreamsMoveChunks) {
    source.rdbuf()->pubsetbuf(nullptr, 0);
    dest.rdbuf()->pubsetbuf(nullptr, 0);
    return;
  }
  sourceBlock = mallocBlock<char>(parameters.chunkSize);
  destBlock = mallocBlock<char>(parameters.chunkSize);
  if (!sourceBlock || !destBlock) return;
  source.rdbuf()->pubsetbuf(sourceBlock.get(), parameters.chunkSize);
  dest.rdbuf()->pubsetbuf(destBlock.get(), parameters.chunkSize);
}

void _fileCopy_stream::close() {
  if (source.is_open()) source.close();
  if (dest.is_open()) dest.close();
}

bool _fileCopy_stream::transferChunk(std::byte* buffer, const std::int32_t& length) {
  if (buffer == nullptr) {
    // The result is not looked at, on purpose: rows stay comparable with those of clients that
    // never looked.
    dest << source.rdbuf();
    return true;
  }
  if (length < 0) return readFailed(sourcePath, EINVAL);
  auto* bytes = reinterpret_cast<char*>(buffer);
  source.read(bytes, length);
  if (!source.good()) return readFailed(sourcePath, errno);
  dest.write(bytes, length);
  if (!dest.good()) return writeFailed(destPath, errno);
  if (parameters.flush) dest.flush();
  return true;
}

}  // namespace marrowbench
