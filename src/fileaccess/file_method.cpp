#include "fileaccess/file_method.h"

#include "fileaccess/error_text.h"

namespace marrowbench {

bool _fileGLobal::preallocate(const bool& /*afterOpen*/) {
  setError("Preallocation not supported!");
  return false;
}

void _fileGLobal::clearInvalidSettings() { setError("clearInvalidSettings not supported!"); }

void _fileGLobal::setError(std::string_view part1, std::string_view part2, std::string_view part3,
                           std::string_view part4, std::string_view part5) {
  errorText = composeError(part1, part2, part3, part4, part5);
}

bool _fileGLobal::openFailed(const FixedString& path, int code) {
  setError("Unable to open file '", path, "' ! ", errnoText(code));
  return false;
}

bool _fileGLobal::readFailed(const FixedString& path, int code) {
  setError("Unable to read file '", path, "' ! ", errnoText(code));
  return false;
}

bool _fileGLobal::writeFailed(const FixedString& path, int code) {
  setError("Unable to write file '", path, "' ! ", errnoText(code));
  return false;
}

bool _fileGLobal::findFailed(const FixedString& path, int code) {
  setError("Unable to find source file '", path, "' ! ", errnoText(code));
  return false;
}

bool _fileGLobal::preallocateFailed(const FixedString& path, int code) {
  setError("Unable to preallocate file '", path, "' ! ", errnoText(code));
  return false;
}

bool _fileGLobal::allocateFailed(int code) {
  setError("Unable to allocate memory buffer! ", errnoText(code));
  return false;
}

bool _fileGLobal::singleChunkRefused() {
  setError("single chunk copy not supported");
  return false;
}

bool _fileCopy::open() {
  setError("Base class!");
  return false;
}

void _fileCopy::close() { setError("Base class!"); }

bool _fileCopy::transferChunk(std::byte* /*buffer*/, const std::int32_t& /*length*/) {
  setError("Base class!");
  return false;
}

bool _fileReadWriteBuffer::open() {
  setError("Base class!");
  return false;
}

void _fileReadWriteBuffer::close() { setError("Base class!"); }

bool _fileReadWriteBuffer::transferChunk(std::byte* /*chunk*/, const std::int32_t& /*length*/) {
  setError("Base class!");
  return false;
}

}  // namespace marrowbench
