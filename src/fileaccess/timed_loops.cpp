#include "fileaccess/timed_loops.h"

#include <algorithm>
#include <cerrno>

#include "fileaccess/malloc_block.h"
#include "fileaccess/null_check.h"
#include "support/clock.h"
#include "support/file_status.h"

namespace marrowbench {
namespace {

void startRun(_fileGLobal& method) {
  method.errorText.clear();
  method.parameters.nullPosition = -1;
  nowMs(method.parameters.startMs);
  errno = 0;
}

// errno is cleared first: a transfer that is cut short does not set it, and the reason of an older
// failure must not be told for it.
template <class FileMethod>
bool transfer(FileMethod& method, std::byte* memory, std::int32_t length) {
  errno = 0;
  return method.transferChunk(memory, length);
}

// Sizes are kept in 32 bits: of the size of a larger file the low half is left.
std::int32_t lowHalf(std::int64_t size) { return static_cast<std::int32_t>(size); }

bool copyChunks(_fileCopy& method, std::int64_t size) {
  ParameterBlock& p = method.parameters;
  p.nullPosition = 0;
  const MallocBlock<std::byte> buffer = mallocBlock<std::byte>(p.chunkSize);
  if (!buffer) return method.allocateFailed(errno);
  std::int64_t total = 0;
  do {
    const auto length =
        static_cast<std::int32_t>(std::min<std::int64_t>(size - total, p.chunkSize));
    if (!transfer(method, buffer.get(), length)) return false;
    total += length;
    checkChunkForNulls(buffer.get() + length, length, total, p.nullPosition);
    sleepMs(p.chunkWait);
  } while (total < size);
  return true;
}

bool transferChunks(_fileReadWriteBuffer& method) {
  ParameterBlock& p = method.parameters;
  std::int32_t total = 0;
  do {
    const std::int32_t length = std::min(p.fileSize - total, p.chunkSize);
    if (!transfer(method, method.buffer + total, length)) return false;
    total += length;
    checkChunkForNulls(method.buffer + total, length, total, p.nullPosition);
    sleepMs(p.chunkWait);
  } while (total < p.fileSize);
  return true;
}

bool transferWhole(_fileReadWriteBuffer& method) {
  ParameterBlock& p = method.parameters;
  const bool moved = transfer(method, method.buffer, p.fileSize);
  // Also after a failed transfer. A negative size would lead to a place before the buffer.
  if (p.fileSize > 0) checkWholeForNulls(method.buffer + p.fileSize, p.fileSize, p.nullPosition);
  return moved;
}

}  // namespace

bool runCopy(_fileCopy& method) {
  ParameterBlock& p = method.parameters;
  startRun(method);

  std::int64_t size = 0;
  if (!fileStatus(method.sourcePath, nullptr, &size)) return false;
  p.fileSize = lowHalf(size);
  if (size <= 0) return false;

  if (p.prealloc && !method.preallocate(false)) {
    return method.preallocateFailed(method.destPath, errno);
  }
  if (!method.open()) return false;
  if (p.prealloc && !method.preallocate(true)) {
    return method.preallocateFailed(method.destPath, errno);
  }

  const bool moved =
      p.chunkSize <= 0 ? transfer(method, nullptr, p.fileSize) : copyChunks(method, size);
  method.close();
  if (!moved) return false;
  recordRun(p.stats, size, elapsedMs(p.startMs));
  return true;
}

bool runReadWrite(_fileReadWriteBuffer& method) {
  ParameterBlock& p = method.parameters;
  startRun(method);

  const bool isWrite = !method.isRead;
  if (method.isRead) {
    std::int64_t size = 0;
    if (!fileStatus(method.path, nullptr, &size)) return method.findFailed(method.path, errno);
    p.fileSize = std::min(lowHalf(size), kMaxFileSize);
  }

  if (isWrite && p.prealloc && !method.preallocate(false)) {
    return method.preallocateFailed(method.path, errno);
  }
  if (!method.open()) return false;
  if (method.isRead) p.nullPosition = 0;
  if (isWrite && p.prealloc && !method.preallocate(true)) {
    return method.preallocateFailed(method.path, errno);
  }

  const bool moved = p.chunkSize <= 0 ? transferWhole(method) : transferChunks(method);
  method.close();
  if (!moved) return false;
  recordRun(p.stats, p.fileSize, elapsedMs(p.startMs));
  return true;
}

}  // namespace marrowbench
