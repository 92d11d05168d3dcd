#ifndef MARROWBENCH_FILEACCESS_FILE_COPY_METHODS_H
#define MARROWBENCH_FILEACCESS_FILE_COPY_METHODS_H

#include <cstdio>
#include <fstream>

#include "fileaccess/file_method.h"
#include "fileaccess/malloc_block.h"

// clang-format off: keeps the table
/// The three ways to copy a file. Each is made from a filled _fileCopy, of which it takes every
/// field; each closes what is still open when it is destroyed. What they do differently is what is
/// measured:
///
/// | setting          | stream                | FILE                  | descriptor           |
/// |------------------|-----------------------|-----------------------|----------------------|
/// | destination      | truncated             | must not exist        | keeps a longer tail  |
/// | systemBuffer > 0 | chunkSize, both files | chunkSize, both files | ignored              |
/// | systemBuffer 0   | unbuffered, both      | unbuffered, both      | ignored              |
/// | flush            | after each write      | after each write      | ignored              |
/// | single transfer  | whole file            | refused               | refused              |
/// | preallocate      | refused               | refused               | reserved, length set |
// clang-format on
namespace marrowbench {

/// Method "Stream": the standard library's file streams.
class _fileCopy_stream final : public _fileCopy {
 public:
  explicit _fileCopy_stream(const _fileCopy& values);
  _fileCopy_stream(const _fileCopy_stream&) = delete;
  _fileCopy_stream& operator=(const _fileCopy_stream&) = delete;

  [[nodiscard]] bool open() override;
  void close() override;
  [[nodiscard]] bool transferChunk(std::byte* buffer, const std::int32_t& length) override;

 private:
  void setBuffering();

  // Declared before the streams: a stream still writes from its block while it is destroyed.
  MallocBlock<char> sourceBlock;
  MallocBlock<char> destBlock;
  std::ofstream dest;
  std::ifstream source;
};

/// Method "AnsiC": C stdio.
class _fileCopy_FILE final : public _fileCopy {
 public:
  explicit _fileCopy_FILE(const _fileCopy& values);
  _fileCopy_FILE(const _fileCopy_FILE&) = delete;
  _fileCopy_FILE& operator=(const _fileCopy_FILE&) = delete;
  ~_fileCopy_FILE();

  [[nodiscard]] bool open() override;
  void close() override;
  [[nodiscard]] bool transferChunk(std::byte* buffer, const std::int32_t& length) override;

 private:
  void setBuffering();

  std::FILE* source = nullptr;
  std::FILE* dest = nullptr;
  MallocBlock<char> sourceBlock;
  MallocBlock<char> destBlock;
};

/// Method "Posix": file descriptors.
class _fileCopy_fd final : public _fileCopy {
 public:
  explicit _fileCopy_fd(const _fileCopy& values);
  _fileCopy_fd(const _fileCopy_fd&) = delete;
  _fileCopy_fd& operator=(const _fileCopy_fd&) = delete;
  ~_fileCopy_fd();

  /// Before the open: does nothing, true. After it: preallocateFile() of the destination.
  [[nodiscard]] bool preallocate(const bool& afterOpen) override;
  [[nodiscard]] bool open() override;
  void close() override;
  [[nodiscard]] bool transferChunk(std::byte* buffer, const std::int32_t& length) override;

 private:
  int source = -1;
  int dest = -1;
};

}  // namespace marrowbench

#endif
