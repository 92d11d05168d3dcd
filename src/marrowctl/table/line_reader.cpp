#include "marrowctl/table/line_reader.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kNowhere = SIZE_MAX;

}  // namespace

LineReader::LineReader(int fileDescriptor)
    : descriptor(fileDescriptor), buffer(kLongest + kBlock + 2 * kMaskBytes) {}

bool LineReader::next(TextLine& line) {
  for (;;) {
    const std::size_t feed = findLineFeed();
    if (feed != kNowhere) {
      const std::size_t length = feed - begin;
      if (isInCutLine) {
        isInCutLine = false;
        begin = feed + 1;
        continue;
      }
      take(line, length, true);
      begin = feed + 1;
      return true;
    }
    if (!isInCutLine && end - begin > kLongest) {
      take(line, end - begin, false);
      isInCutLine = true;
      begin = end;
      return true;
    }
    if (isInCutLine) begin = end;
    if (fill()) continue;
    if (begin == end) return false;
    take(line, end - begin, false);
    begin = end;
    return true;
  }
}

// From the place that was looked at last.
std::size_t LineReader::findLineFeed() {
  while (mask == 0) {
    if (maskAt >= end) return kNowhere;
    mask = equalMask(buffer.data() + maskAt, '\n');
    // What stands behind the end is from an earlier block.
    if (end - maskAt < kMaskBytes) mask &= (std::uint64_t{1} << (end - maskAt)) - 1;
    maskAt += kMaskBytes;
  }
  const std::size_t feed = maskAt - kMaskBytes + static_cast<std::size_t>(std::countr_zero(mask));
  mask &= mask - 1;
  return feed;
}

// Moves what is left of the block to the front and reads on behind it.
bool LineReader::fill() {
  if (isAtEnd) return false;
  std::memmove(buffer.data(), buffer.data() + begin, end - begin);
  end -= begin;
  begin = 0;
  maskAt = end;
  ssize_t got = -1;
  do {
    got = read(descriptor, buffer.data() + end, kBlock);
  } while (got < 0 && errno == EINTR);
  if (got < 0) error = errno;
  isAtEnd = got <= 0;
  if (isAtEnd) return false;
  end += static_cast<std::size_t>(got);
  total += static_cast<std::uint64_t>(got);
  return true;
}

void LineReader::take(TextLine& line, std::size_t length, bool isEnded) {
  line.text = {buffer.data() + begin, std::min(length, kLongest)};
  line.number = ++number;
  line.begin = total - (end - begin);
  line.isEnded = isEnded;
  line.isCut = length > kLongest;
}

std::size_t findSeparators(std::string_view text, char separator, std::uint32_t* positions) {
  std::uint32_t* next = positions;
  for (std::size_t at = 0; at < text.size(); at += kMaskBytes) {
    std::uint64_t mask = equalMask(text.data() + at, separator);
    if (text.size() - at < kMaskBytes) mask &= (std::uint64_t{1} << (text.size() - at)) - 1;
    for (; mask != 0; mask &= mask - 1) {
      *next++ = static_cast<std::uint32_t>(at) + static_cast<std::uint32_t>(std::countr_zero(mask));
    }
  }
  return static_cast<std::size_t>(next - positions);
}

}  // namespace marrowbench::ctl
