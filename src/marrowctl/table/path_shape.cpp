#include "marrowctl/table/path_shape.h"

#include <algorithm>
#include <cstring>

namespace marrowbench::ctl {
namespace {

constexpr Digits kTen = 10;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The number that begins at `at`, which is moved behind it. @pre a digit stands there
Digits takeDigits(const char*& at, const char* end) {
  const char* const last =
      end - at > static_cast<std::ptrdiff_t>(kDigitsOfNumber) ? at + kDigitsOfNumber : end;
  Digits digits = 1;
  for (; at != last && isDigit(*at); ++at) digits = digits * kTen + static_cast<Digits>(*at - '0');
  return digits;
}

}  // namespace

std::string textOf(Digits digits) { return std::to_string(digits).substr(1); }

std::int64_t valueOf(Digits digits) {
  Digits power = 1;
  while (power <= digits / kTen) power *= kTen;
  return static_cast<std::int64_t>(digits - power);
}

bool hasLeadingZero(Digits digits) {
  const std::string text = textOf(digits);
  return text.size() > 1 && text.front() == '0';
}

bool appendShape(std::string_view text, std::string& shape, std::vector<Digits>& numbers) {
  // For each character of a row: no call in it.
  const std::size_t before = shape.size();
  shape.resize(before + text.size());
  char* out = shape.data() + before;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) {
    if (!isDigit(*at)) {
      if (*at == kNumberMark) return false;
      *out++ = *at++;
      continue;
    }
    *out++ = kNumberMark;
    numbers.push_back(takeDigits(at, end));
  }
  shape.resize(static_cast<std::size_t>(out - shape.data()));
  return true;
}

ShapeMatcher::ShapeMatcher(std::string_view shape) {
  for (;;) {
    const std::string_view part = shape.substr(0, shape.find(kNumberMark));
    fixed += part;
    lengths.push_back(part.size());
    if (part.size() == shape.size()) return;
    shape.remove_prefix(part.size() + 1);
  }
}

bool ShapeMatcher::matches(std::string_view text, std::vector<Digits>& numbers) const {
  const char* at = text.data();
  const char* const end = at + text.size();
  const char* part = fixed.data();
  for (std::size_t i = 0;; ++i) {
    // Between marks a shape has no digit, so that none is overlooked where the texts are equal.
    if (static_cast<std::size_t>(end - at) < lengths[i]) return false;
    if (std::memcmp(at, part, lengths[i]) != 0) return false;
    at += lengths[i];
    part += lengths[i];
    if (i + 1 == lengths.size()) return at == end;
    if (at == end || !isDigit(*at)) return false;
    numbers.push_back(takeDigits(at, end));
  }
}

std::string filledShape(std::string_view shape, const Digits*& numbers) {
  std::string text;
  while (!shape.empty()) {
    const std::size_t mark = std::min(shape.find(kNumberMark), shape.size());
    text += shape.substr(0, mark);
    if (mark == shape.size()) break;
    text += textOf(*numbers++);
    shape.remove_prefix(mark + 1);
  }
  return text;
}

void appendSpans(std::string_view shape, const Digits*& numbers,
                 std::vector<std::pair<std::size_t, std::size_t>>& spans) {
  std::size_t at = 0;
  for (const char c : shape) {
    if (c != kNumberMark) {
      ++at;
      continue;
    }
    const std::size_t length = textOf(*numbers++).size();
    spans.emplace_back(at, length);
    at += length;
  }
}

std::size_t marksIn(std::string_view shape) {
  return static_cast<std::size_t>(std::count(shape.begin(), shape.end(), kNumberMark));
}

void appendPacked(std::uint64_t number, std::vector<std::uint8_t>& bytes) {
  for (; number >= 0x80U; number >>= 7U) {
    bytes.push_back(static_cast<std::uint8_t>(number | 0x80U));
  }
  bytes.push_back(static_cast<std::uint8_t>(number));
}

}  // namespace marrowbench::ctl
