#ifndef MARROWBENCH_FILEACCESS_FILE_READ_WRITE_METHODS_H
#define MARROWBENCH_FILEACCESS_FILE_READ_WRITE_METHODS_H

#include <cstdio>
#include <fstream>

#include "fileaccess/file_method.h"
#include "fileaccess/malloc_block.h"

// clang-format off: keeps the table
/// The three ways to move data between a file and memory. Each is made from a filled
/// _fileReadWriteBuffer, of which it takes every field; each closes what is still open when it is
/// destroyed. Only the file of the test's direction is opened.
///
/// | setting            | stream                       | FILE             | descriptor           |
/// |--------------------|------------------------------|------------------|----------------------|
/// | write test opens   | truncating                   | must not exist   | keeps a longer tail  |
/// | systemBuffer       | input: chunkSize, unbuffered | never reaches it | ignored              |
/// | flush (write test) | then checked                 | then checked     | ignored              |
/// | preallocate        | refused                      | refused          | reserved, length set |
// clang-format on
namespace marrowbench {

/// Method "Stream": the standard library's file streams.
class _fileReadWriteBuffer_stream final : public _fileReadWriteBuffer {
 public:
  explicit _fileReadWriteBuffer_stream(const _fileReadWriteBuffer& values);
  _fileReadWriteBuffer_stream(const _fileReadWriteBuffer_stream&) = delete;
  _fileReadWriteBuffer_stream& operator=(const _fileReadWriteBuffer_stream&) = delete;

  [[nodiscard]] bool open() override;
  void close() override;
  [[nodiscard]] bool transferChunk(std::byte* chunk, const std::int32_t& length) override;

 private:
  void setInputBuffering();

  // Declared before the streams: a stream may use its block while it is destroyed.
  MallocBlock<char> block;
  std::ofstream output;
  std::ifstream input;
};

/// Method "AnsiC": C stdio.
class _fileReadWriteBuffer_FILE final : public _fileReadWriteBuffer {
 public:
  explicit _fileReadWriteBuffer_FILE(const _fileReadWriteBuffer& values);
  _fileReadWriteBuffer_FILE(const _fileReadWriteBuffer_FILE&) = delete;
  _fileReadWriteBuffer_FILE& operator=(const _fileReadWriteBuffer_FILE&) = delete;
  ~_fileReadWriteBuffer_FILE();

  [[nodiscard]] bool open() override;
  void close() override;
  [[nodiscard]] bool transferChunk(std::byte* chunk, const std::int32_t& length) override;

 private:
  void setBuffering();

  std::FILE* file = nullptr;
};

/// Method "Posix": file descriptors.
class _fileReadWriteBuffer_fd final : public _fileReadWriteBuffer {
 public:
  explicit _fileReadWriteBuffer_fd(const _fileReadWriteBuffer& values);
  _fileReadWriteBuffer_fd(const _fileReadWriteBuffer_fd&) = delete;
  _fileReadWriteBuffer_fd& operator=(const _fileReadWriteBuffer_fd&) = delete;
  ~_fileReadWriteBuffer_fd();

  /// Before the open: does nothing, true. After it: preallocateFile() of the file.
  [[nodiscard]] bool preallocate(const bool& afterOpen) override;
  [[nodiscard]] bool open() override;
  void close() override;
  [[nodiscard]] bool transferChunk(std::byte* chunk, const std::int32_t& length) override;

 private:
  int file = -1;
};

}  // namespace marrowbench

#endif
