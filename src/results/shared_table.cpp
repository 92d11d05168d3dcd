#include "results/shared_table.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <string_view>

#include "results/results_lock.h"
#include "results/text_file_writer.h"
#include "support/file_status.h"

namespace marrowbench {
namespace {

constexpr int kLockTimeoutMs = 10000;

// A table as the share shows it.
struct Table {
  bool exists = false;
  bool isMissing = false;  // neither: the share does not tell
  std::int64_t size = 0;
};

// Asks twice: a share may fail once, after a restart of its server say.
Table lookAt(const FixedString& path) {
  Table table;
  for (int attempt = 0; attempt < 2 && !table.exists && !table.isMissing; ++attempt) {
    errno = 0;
    table.exists = fileStatus(path, nullptr, &table.size);
    table.isMissing = !table.exists && errno == ENOENT;
  }
  return table;
}

// Whether nothing stands behind `offset` but the beginning of `text`; false where it can't be read.
bool endsInBeginningOf(const TextBuffer& text, const FixedString& path, std::int64_t offset) {
  std::ifstream table(path.c_str(), std::ios::binary);
  if (!table.seekg(offset)) return false;
  std::array<char, TextBuffer::capacity() + 1> tail{};
  table.read(tail.data(), tail.size());
  const std::string_view found(tail.data(), static_cast<std::size_t>(table.gcount()));
  return table.eof() && text.view().starts_with(found);
}

// A full disk takes the beginning of a row, which would stand in front of the next client's row, or
// an empty file, which would get no header. Only our own bytes go: where the lock or the table's
// size could not be relied on, another client's row may stand there.
void takeBack(const FixedString& path, const Table& before, const TextBuffer& text) {
  if (!endsInBeginningOf(text, path, before.size)) return;
  if (before.isMissing) (void)unlink(path.c_str());
  if (!before.exists) return;
  [[maybe_unused]] const int result = truncate(path.c_str(), before.size);
}

bool appendWhole(const FixedString& path, const Table& before, const TextBuffer& text) {
  errno = 0;
  const int status = writeTextFile(path, text, false, false);
  const int code = errno;
  if (status == 0 && code == 0) return true;
  // The writer calls a failed open a success, and a failed flush a failure even where the close
  // made up for it: then the size tells.
  const Table after = lookAt(path);
  const auto length = static_cast<std::int64_t>(text.length());
  const bool isWhole = after.exists && after.size >= before.size + length;
  if (!isWhole) takeBack(path, before, text);
  errno = code;
  return isWhole;
}

// The lock's name is cut to its capacity, and its file bears one character less. Of a table's path
// of either length nothing but the path would be left: the table would be taken for the lock, and
// deleted with it.
bool leavesNoNameForTheLock(const FixedString& path) {
  const std::size_t length = path.length();
  return length == WideFixedString::capacity() || length == WideFixedString::capacity() - 1;
}

}  // namespace

TableAppend appendToTable(const FixedString& path, const TextBuffer& header,
                          const TextBuffer& row) {
  if (leavesNoNameForTheLock(path)) {
    errno = ENAMETOOLONG;
    return TableAppend::failed;
  }
  WideFixedString widePath;
  widePath.assignBytes(path);
  ResultsLock lock(widePath);
  int timeoutMs = kLockTimeoutMs;
  if (!lock.acquire(timeoutMs, {}, nullptr, false)) return TableAppend::locked;
  // Under the lock: only one client finds no table and writes the header.
  const Table before = lookAt(path);
  TextBuffer text;
  if (before.isMissing) text = header;
  text.append(row);
  const bool isWritten = appendWhole(path, before, text);
  const int code = errno;
  lock.release();
  errno = code;
  return isWritten ? TableAppend::written : TableAppend::failed;
}

}  // namespace marrowbench
