#ifndef MARROWBENCH_TESTS_FAKES_SCRIPTED_METHODS_H
#define MARROWBENCH_TESTS_FAKES_SCRIPTED_METHODS_H

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fileaccess/file_method.h"

namespace marrowbench::test {

/// What a scripted method object does and what it was asked to do.
struct MethodScript {
  std::vector<std::string> log;   ///< "preallocate before", "open", "transfer 4096", "close", ...
  bool preallocateBefore = true;  ///< answers
  bool preallocateAfter = true;
  bool opens = true;
  int failingTransfer = -1;    ///< the transfer (0 for the first) that fails
  unsigned char fill = 0x41;   ///< what a transfer into memory leaves there
  int firstNullTransfer = -1;  ///< the first transfer (0 for the first) that leaves zeros instead
  int transfers = 0;

  bool preallocate(bool afterOpen) {
    log.emplace_back(afterOpen ? "preallocate after" : "preallocate before");
    return afterOpen ? preallocateAfter : preallocateBefore;
  }
  bool open() {
    log.emplace_back("open");
    return opens;
  }
  void close() {
    log.emplace_back("close");
    errno = EBADF;  // Shows in the text of a failure whose errno is taken too late.
  }
  bool transfer(std::byte* memory, std::int32_t length, bool fillsMemory) {
    log.push_back((memory == nullptr ? "whole " : "transfer ") + std::to_string(length));
    const int number = transfers++;
    if (number == failingTransfer) return false;
    const bool leavesNulls = firstNullTransfer >= 0 && number >= firstNullTransfer;
    if (memory != nullptr && fillsMemory && length > 0) {
      std::memset(memory, leavesNulls ? 0 : fill, static_cast<std::size_t>(length));
    }
    return true;
  }
};

class ScriptedCopy final : public _fileCopy {
 public:
  MethodScript script;

  bool preallocate(const bool& afterOpen) override { return script.preallocate(afterOpen); }
  bool open() override { return script.open() || fail("open failed"); }
  void close() override { script.close(); }
  bool transferChunk(std::byte* memory, const std::int32_t& length) override {
    return script.transfer(memory, length, true) || fail("transfer failed");
  }

 private:
  bool fail(const char* text) {
    setError(text);
    return false;
  }
};

class ScriptedReadWrite final : public _fileReadWriteBuffer {
 public:
  MethodScript script;
  std::vector<std::int64_t> offsets;  ///< where in the buffer each transfer began

  bool preallocate(const bool& afterOpen) override { return script.preallocate(afterOpen); }
  bool open() override { return script.open() || fail("open failed"); }
  void close() override { script.close(); }
  bool transferChunk(std::byte* memory, const std::int32_t& length) override {
    offsets.push_back(memory - buffer);
    return script.transfer(memory, length, isRead) || fail("transfer failed");
  }

 private:
  bool fail(const char* text) {
    setError(text);
    return false;
  }
};

}  // namespace marrowbench::test

#endif
