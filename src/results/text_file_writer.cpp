#include "results/text_file_writer.h"

#include <array>
#include <cerrno>
#include <cstdio>

#include "support/clock.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

TextBuffer lineFor(const TextBuffer& text, bool withTimestamp) {
  TextBuffer line;
  if (withTimestamp) line.append(shortStamp(currentSeconds())).append(": ");
  return line.append(text).append('\n');
}

}  // namespace

int writeTextFile(const FixedString& path, const TextBuffer& text, bool overwrite,
                  bool withTimestamp, bool* opened) {
  const TextBuffer line = lineFor(text, withTimestamp);
  std::FILE* file = std::fopen(path.c_str(), overwrite ? "w" : "a");
  if (opened != nullptr) *opened = file != nullptr;
  if (file == nullptr) return 0;

  // The default buffer is smaller than a line: a row would reach the share in two pieces.
  std::array<char, 8192> buffer{};
  static_assert(sizeof buffer > TextBuffer::capacity());
  (void)std::setvbuf(file, buffer.data(), _IOFBF, buffer.size());
  (void)std::fwrite(line.c_str(), 1, line.length(), file);
  const int flushed = std::fflush(file);
  const int code = errno;
  const int closed = std::fclose(file);
  if (flushed != 0) errno = code;
  return flushed | closed;
}

}  // namespace marrowbench
