#ifndef MARROWBENCH_MARROWCTL_TABLE_LINE_READER_H
#define MARROWBENCH_MARROWCTL_TABLE_LINE_READER_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "marrowctl/table/byte_mask.h"

namespace marrowbench::ctl {

/// A line of a file.
struct TextLine {
  /// Without its line feed, and cut at LineReader::kLongest. At least kMaskBytes bytes that may be
  /// read stand behind it.
  std::string_view text;
  std::uint64_t number = 0;  ///< from 1
  std::uint64_t begin = 0;   ///< where it begins in what was read, from 0
  bool isEnded = false;      ///< by a line feed: false for a last line without one
  bool isCut = false;        ///< it is longer than kLongest
};

/// Reads a file of any size line by line, in blocks. The file is not mapped: a share may take it
/// away or cut it while it is read.
class LineReader {
 public:
  /// A row has at most 5,000 bytes.
  static constexpr std::size_t kLongest = 32768;
  static constexpr std::size_t kBlock = 262144;

  /// @param fileDescriptor  open for reading; stays the caller's
  explicit LineReader(int fileDescriptor);

  /// Takes the next line, whose text is valid until the next call. @return false at the end
  bool next(TextLine& line);

  /// errno of the reading that failed; 0: none did.
  [[nodiscard]] int failure() const { return error; }
  [[nodiscard]] std::uint64_t bytesRead() const { return total; }

 private:
  [[nodiscard]] std::size_t findLineFeed();
  bool fill();
  void take(TextLine& line, std::size_t length, bool isEnded);

  int descriptor;
  int error = 0;
  bool isAtEnd = false;
  bool isInCutLine = false;  // its front was given out, its rest is passed over
  std::vector<char> buffer;
  std::size_t begin = 0;   // of the next line
  std::size_t end = 0;     // of what was read
  std::size_t maskAt = 0;  // where the 64 bytes begin that `mask` stands for
  std::uint64_t mask = 0;  // line feeds that are not taken yet
  std::uint64_t total = 0;
  std::uint64_t number = 0;
};

/// Writes the positions of all separators of a line, in their order, to `positions`.
///
/// @param text       with kMaskBytes readable bytes behind it
/// @param positions  room for as many as the text has bytes
/// @return how many there are
std::size_t findSeparators(std::string_view text, char separator, std::uint32_t* positions);

}  // namespace marrowbench::ctl

#endif
