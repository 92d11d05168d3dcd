#ifndef MARROWBENCH_FILEACCESS_FILE_METHOD_H
#define MARROWBENCH_FILEACCESS_FILE_METHOD_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fileaccess/run_stats.h"
#include "support/fixed_string.h"

/// The method objects: each hides which I/O interface moves the data of one test. The timed loops
/// drive them through the virtual operations only.
///
/// No class has a virtual destructor, so the virtual operations are these five and no more. Nothing
/// needs one: each object lives on the stack of the code that picked its class. Only the root and
/// the intermediate classes, which own nothing, are copied.
namespace marrowbench {

/// Root: error text, parameters and results.
class _fileGLobal {
 public:
  FixedString errorText;  ///< empty: no error
  ParameterBlock parameters;

  /// Reserves space for the file written. Called once before and once after the open.
  ///
  /// @param afterOpen  tells which call it is
  /// @return false when the space can't be reserved. The root's own version sets the error
  ///         "Preallocation not supported!" and returns false.
  [[nodiscard]] virtual bool preallocate(const bool& afterOpen);

  /// Sets the error "clearInvalidSettings not supported!".
  virtual void clearInvalidSettings();

  /// Sets errorText to composeError() of the parts.
  void setError(std::string_view part1, std::string_view part2 = {}, std::string_view part3 = {},
                std::string_view part4 = {}, std::string_view part5 = {});

  /// Each sets the error text of a failure on a file. @param code  its errno @return false
  bool openFailed(const FixedString& path, int code);
  bool readFailed(const FixedString& path, int code);
  bool writeFailed(const FixedString& path, int code);
  bool findFailed(const FixedString& path, int code);
  bool preallocateFailed(const FixedString& path, int code);
  /// Sets the text for a chunk or memory buffer that could not be allocated. @return false
  bool allocateFailed(int code);
  /// Sets the text for a class that can't move a whole file in one step. @return false
  bool singleChunkRefused();
};

/// A copy from file to file.
class _fileCopy : public _fileGLobal {
 public:
  FixedString sourcePath;
  FixedString destPath;

  _fileCopy() = default;

  /// Opens both files. @return false, with errorText set and nothing left open, on failure
  [[nodiscard]] virtual bool open();

  /// Closes what is open. Failures are not reported.
  virtual void close();

  /// Copies the next bytes through `buffer`.
  ///
  /// @param buffer  memory for `length` bytes; null: the whole rest of the file in one step
  /// @param length  bytes to move, exactly; a negative one fails with EINVAL
  /// @return false, with errorText set, when they could not all be moved
  [[nodiscard]] virtual bool transferChunk(std::byte* buffer, const std::int32_t& length);
};

/// A transfer between one file and a memory buffer.
class _fileReadWriteBuffer : public _fileGLobal {
 public:
  std::byte* buffer = nullptr;  ///< owned by the caller, at least fileSize bytes
  bool isRead = false;          ///< true: file into memory; false: memory into file
  FixedString path;

  _fileReadWriteBuffer() = default;

  /// Opens the file in the direction of the test. @return false, with errorText set, on failure
  [[nodiscard]] virtual bool open();

  /// Closes the file if it is open. Failures are not reported.
  virtual void close();

  /// Moves the next bytes between the file and `chunk`.
  ///
  /// @param chunk   where they belong in the memory buffer
  /// @param length  bytes to move, exactly; a negative one fails with EINVAL
  /// @return false, with errorText set, when they could not all be moved
  [[nodiscard]] virtual bool transferChunk(std::byte* chunk, const std::int32_t& length);
};

static_assert(sizeof(_fileGLobal) == 592);

}  // namespace marrowbench

#endif
