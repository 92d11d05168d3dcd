#include "results/shared_table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string_view>

#include "results/results_lock.h"
#include "results/text_file_writer.h"

namespace marrowbench {
namespace {

constexpr int kLockTimeoutMs = 10000;

// A table as the share shows it.
enum class TableKind {
  missing,  // or made just now, and empty
  file,
  other,  // a pipe, a terminal, a folder, or the share does not tell
};
struct Table {
  TableKind kind = TableKind::other;
  std::int64_t size = 0;  // of a file
};

// Asks twice: a share may fail once, after a restart of its server say.
Table lookAt(const FixedString& path) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
      if (!S_ISREG(status.st_mode)) return {};
      return {TableKind::file, status.st_size};
    }
    if (errno == ENOENT) return {TableKind::missing};
  }
  return {};
}

// Makes the table unless it is there after all: an SMB client remembers for a second that a name
// was missing, and asks the server when it is to open a file that it may have to create.
Table createOrFind(const FixedString& path) {
  const int table = open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666);
  if (table < 0) return {TableKind::missing};
  struct stat status {};
  const bool isKnown = fstat(table, &status) == 0;
  (void)close(table);
  if (isKnown && !S_ISREG(status.st_mode)) return {};
  if (!isKnown || status.st_size == 0) return {TableKind::missing};
  return {TableKind::file, status.st_size};
}

// Whether nothing stands behind `offset` but the beginning of `text`; false where it can't be read.
bool endsInBeginningOf(const TextBuffer& text, int table, std::int64_t offset) {
  std::array<char, TextBuffer::capacity() + 1> tail{};
  const ssize_t count = pread(table, tail.data(), tail.size(), offset);
  if (count < 0) return false;
  return text.view().starts_with(std::string_view(tail.data(), static_cast<std::size_t>(count)));
}

// A full disk takes the beginning of a row, which would stand in front of the next client's row, or
// an empty file, which would get no header. Only our own bytes go, and only while nobody else may
// write; all questions are put to one descriptor, so that they are about one file.
void takeBack(const FixedString& path, const Table& before, const TextBuffer& text,
              const ResultsLock& lock) {
  if (before.kind == TableKind::other) return;
  const int table = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (table < 0) return;
  struct stat now {};
  const bool mayCut = fstat(table, &now) == 0 && now.st_size >= before.size &&
                      endsInBeginningOf(text, table, before.size) && !lock.isLost();
  if (mayCut && before.kind == TableKind::missing) (void)unlink(path.c_str());
  if (mayCut && before.kind == TableKind::file) {
    [[maybe_unused]] const int result = ftruncate(table, before.size);
  }
  (void)close(table);
}

bool appendWhole(const FixedString& path, const Table& before, const TextBuffer& text,
                 const ResultsLock& lock) {
  bool opened = false;
  const int status = writeTextFile(path, text, false, false, &opened);
  if (opened && status == 0) return true;
  // A failed flush is a failure even where the close made up for it: then the size tells.
  const int code = errno;
  const Table after = lookAt(path);
  const auto length = static_cast<std::int64_t>(text.length());
  const bool isWhole =
      opened && after.kind == TableKind::file && after.size >= before.size + length;
  if (!isWhole) takeBack(path, before, text, lock);
  errno = code;
  return isWhole;
}

// The lock's name is the table's with "_lock.txt", cut at 250 characters, and its file bears one
// character less. Of this length nothing but the table's own path would be left: the table would be
// taken for the lock, and deleted with it.
bool leavesNoNameForTheLock(const FixedString& path) {
  return path.length() == WideFixedString::capacity() - 1;
}

TableAppend appendUnder(const ResultsLock& lock, const FixedString& path, const TextBuffer& header,
                        const TextBuffer& row) {
  // Under the lock: only one client finds no table and writes the header.
  Table before = lookAt(path);
  if (lock.isLost()) return TableAppend::takenOver;
  if (before.kind == TableKind::missing) before = createOrFind(path);
  TextBuffer text;
  if (before.kind == TableKind::missing) text = header;
  text.append(row);
  return appendWhole(path, before, text, lock) ? TableAppend::written : TableAppend::failed;
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
  const TableAppend outcome = appendUnder(lock, path, header, row);
  const int code = errno;
  lock.release();
  errno = code;
  return outcome;
}

}  // namespace marrowbench
