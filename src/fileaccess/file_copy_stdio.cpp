#include <cerrno>

#include "fileaccess/file_copy_methods.h"

namespace marrowbench {

_fileCopy_FILE::_fileCopy_FILE(const _fileCopy& values) : _fileCopy(values) {}

_fileCopy_FILE::~_fileCopy_FILE() { _fileCopy_FILE::close(); }

bool _fileCopy_FILE::open() {
  source = std::fopen(sourcePath.c_str(), "rb");
  if (source == nullptr) return openFailed(sourcePath, errno);
  dest = std::fopen(destPath.c_str(), "wbx");
  if (dest == nullptr) {
    const int code = errno;
    close();
    return openFailed(destPath, code);
  }
  setBuffering();
  return true;
}

void _fileCopy_FILE::setBuffering() {
  if (parameters.systemBuffer < 0) return;
  if (parameters.systemBuffer == 0) {
    (void)std::setvbuf(source, nullptr, _IONBF, 0);
    (void)std::setvbuf(dest, nullptr, _IONBF, 0);
    return;
  }
  // With blocks of our own, in use until after fclose(): without a block glibc ignores the size.
  sourceBlock = mallocBlock<char>(parameters.chunkSize);
  destBlock = mallocBlock<char>(parameters.chunkSize);
  if (!sourceBlock || !destBlock) return;
  const auto size = static_cast<std::size_t>(parameters.chunkSize);
  (void)std::setvbuf(source, sourceBlock.get(), _IOFBF, size);
  (void)std::setvbuf(dest, destBlock.get(), _IOFBF, size);
}

void _fileCopy_FILE::close() {
  if (source != nullptr) (void)std::fclose(source);
  if (dest != nullptr) (void)std::fclose(dest);
  source = nullptr;
  dest = nullptr;
}

bool _fileCopy_FILE::transferChunk(std::byte* buffer, const std::int32_t& length) {
  if (buffer == nullptr) return singleChunkRefused();
  if (length < 0) return readFailed(sourcePath, EINVAL);
  const auto wanted = static_cast<std::size_t>(length);
  const std::size_t got = std::fread(buffer, 1, wanted, source);
  if (got != wanted) return readFailed(sourcePath, errno);
  if (std::fwrite(buffer, 1, got, dest) != wanted) return writeFailed(destPath, errno);
  if (parameters.flush) (void)std::fflush(dest);
  return true;
}

}  // namespace marrowbench
