#include "support/fixed_string_ops.h"

#include <algorithm>

namespace marrowbench {
namespace {

constexpr std::size_t kLongestPattern = 500;

std::size_t keptLength(std::size_t sourceLength, std::size_t capacity) {
  return std::min<std::size_t>(sourceLength % 65536, capacity);
}

// Sets the length and clears what stood behind it, so that equal values are equal bytes. The rest
// of the tail is zero already.
template <class Char>
void setLength(TextSlot<Char> slot, std::size_t length) {
  const std::size_t before = *slot.length;
  if (length < before) std::fill(slot.text + length, slot.text + before, Char{});
  *slot.length = static_cast<std::uint16_t>(length);
}

template <class Char>
void assignSame(TextSlot<Char> slot, std::basic_string_view<Char> source) {
  const std::size_t length = keptLength(source.size(), slot.capacity);
  std::char_traits<Char>::move(slot.text, source.data(), length);
  setLength(slot, length);
}

template <class Char>
void appendSame(TextSlot<Char> slot, std::basic_string_view<Char> source) {
  const std::size_t length = std::min(source.size(), slot.capacity - *slot.length);
  std::char_traits<Char>::move(slot.text + *slot.length, source.data(), length);
  setLength(slot, *slot.length + length);
}

template <class Char>
void eraseSame(TextSlot<Char> slot, std::size_t from, std::size_t to) {
  const std::size_t length = *slot.length;
  to = std::min(to, length);
  if (from >= to) return;
  std::char_traits<Char>::move(slot.text + from, slot.text + to, length - to);
  setLength(slot, length - (to - from));
}

template <class Char>
bool equalsUpperCased(std::basic_string_view<Char> a, std::basic_string_view<Char> b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](Char x, Char y) { return upperCase(x) == upperCase(y); });
}

}  // namespace

void assignText(TextSlot<char> slot, std::string_view source) { assignSame(slot, source); }
void assignText(TextSlot<char16_t> slot, std::u16string_view source) { assignSame(slot, source); }

void assignText(TextSlot<char16_t> slot, std::string_view source) {
  const std::string_view kept = source.substr(0, keptLength(source.size(), slot.capacity));
  std::transform(kept.begin(), kept.end(), slot.text, widened);
  setLength(slot, kept.size());
}

void assignText(TextSlot<char> slot, std::u16string_view source) {
  const std::u16string_view kept = source.substr(0, keptLength(source.size(), slot.capacity));
  std::transform(kept.begin(), kept.end(), slot.text, narrowed);
  setLength(slot, kept.size());
}

void appendText(TextSlot<char> slot, std::string_view source) { appendSame(slot, source); }
void appendText(TextSlot<char16_t> slot, std::u16string_view source) { appendSame(slot, source); }

void truncateText(TextSlot<char> slot, std::int32_t length) {
  const auto longest = static_cast<std::int32_t>(slot.capacity);
  setLength(slot, static_cast<std::size_t>(std::clamp(length, 0, longest)));
}

void eraseText(TextSlot<char> slot, std::size_t from, std::size_t to) { eraseSame(slot, from, to); }
void eraseText(TextSlot<char16_t> slot, std::size_t from, std::size_t to) {
  eraseSame(slot, from, to);
}

void removeAllIgnoreCase(TextSlot<char> slot, std::string_view pattern) {
  for (;;) {
    const std::int32_t found = findIgnoreCase({slot.text, *slot.length}, pattern);
    if (found < 0) return;
    const auto from = static_cast<std::size_t>(found);
    eraseText(slot, from, from + pattern.size());
  }
}

void appendReplaced(TextSlot<char> result, std::string_view text, std::string_view pattern,
                    std::string_view replacement) {
  std::size_t position = 0;
  for (;;) {
    const std::int32_t found = findIgnoreCase(text, pattern, position);
    if (found < 0) break;
    const auto start = static_cast<std::size_t>(found);
    appendText(result, text.substr(position, start - position));
    appendText(result, replacement);
    position = start + pattern.size();
  }
  appendText(result, text.substr(position));
}

void replaceCharIgnoreCase(TextSlot<char> slot, char from, char to) {
  std::replace_if(
      slot.text, slot.text + *slot.length,
      [from](char c) { return upperCase(c) == upperCase(from); }, to);
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) { return equalsUpperCased(a, b); }
bool equalsIgnoreCase(std::u16string_view a, std::u16string_view b) {
  return equalsUpperCased(a, b);
}

bool startsWithIgnoreCase(std::string_view text, std::string_view pattern) {
  pattern = pattern.substr(0, kLongestPattern);
  if (pattern.empty() || pattern.size() > text.size()) return false;
  return equalsIgnoreCase(text.substr(0, pattern.size()), pattern);
}

bool endsWithIgnoreCase(std::string_view text, std::string_view pattern) {
  pattern = pattern.substr(0, kLongestPattern);
  if (pattern.empty() || pattern.size() > text.size()) return false;
  return equalsIgnoreCase(text.substr(text.size() - pattern.size()), pattern);
}

std::int32_t findIgnoreCase(std::string_view text, std::string_view pattern, std::size_t start) {
  if (pattern.empty() || start > text.size()) return -1;
  for (std::size_t i = start; i + pattern.size() <= text.size(); ++i) {
    if (equalsIgnoreCase(text.substr(i, pattern.size()), pattern)) {
      return static_cast<std::int32_t>(i);
    }
  }
  return -1;
}

std::int32_t findLastChar(std::string_view text, char c, std::size_t start) {
  const std::size_t found = text.rfind(c, start);
  return found == std::string_view::npos ? -1 : static_cast<std::int32_t>(found);
}

}  // namespace marrowbench
