#ifndef MARROWBENCH_SUPPORT_FIXED_STRING_OPS_H
#define MARROWBENCH_SUPPORT_FIXED_STRING_OPS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The algorithms of the fixed-capacity strings, each written once for every capacity.
///
/// Reading works on views; writing works on a slot that names the parts of one string value.
/// Nothing here allocates, and nothing reports a cut: what does not fit is dropped.
namespace marrowbench {

/// Upper case of an ASCII letter; every other character, 128 and above included, as it is.
[[nodiscard]] constexpr char upperCase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// The same for 16-bit characters: only ASCII letters change.
[[nodiscard]] constexpr char16_t upperCase(char16_t c) {
  return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c;
}

/// One byte as a 16-bit character by sign extension, so 0x80 becomes 0xFF80 whether or not
/// the compiler's plain char is signed.
[[nodiscard]] constexpr char16_t widened(char c) {
  return static_cast<char16_t>(static_cast<signed char>(c));
}

/// The low byte of a 16-bit character.
[[nodiscard]] constexpr char narrowed(char16_t c) {
  return static_cast<char>(static_cast<unsigned char>(c & 0xFF));
}

/// The writable parts of one fixed-capacity string. What stands behind the characters in use is
/// zero, before and after each change.
template <class Char>
struct TextSlot {
  Char* text;             ///< storage of at least capacity + 1 characters
  std::uint16_t* length;  ///< characters in use
  std::size_t capacity;   ///< the most characters it may hold
};

/// Replaces the content by the first min(length modulo 65,536, capacity) characters of `source`.
/// The length field has 16 bits and is filled before the limit is applied, so a source of 65,537
/// characters leaves 1. `source` may lie inside the slot.
void assignText(TextSlot<char> slot, std::string_view source);
void assignText(TextSlot<char16_t> slot, std::u16string_view source);
/// As above, every byte widened() to one 16-bit character.
void assignText(TextSlot<char16_t> slot, std::string_view source);
/// As above, of every character the narrowed() byte.
void assignText(TextSlot<char> slot, std::u16string_view source);

/// Appends as much of `source` as fits. `source` may lie inside the slot.
void appendText(TextSlot<char> slot, std::string_view source);
void appendText(TextSlot<char16_t> slot, std::u16string_view source);

/// Cuts to `length` characters; a length outside 0..capacity is moved to the nearer end.
/// A length beyond the text keeps the zeros that stand there as characters.
void truncateText(TextSlot<char> slot, std::int32_t length);

/// Removes the characters from position `from` up to, not including, position `to`. Positions
/// beyond the text count as its end; `to` not after `from` removes nothing.
void eraseText(TextSlot<char> slot, std::size_t from, std::size_t to);
void eraseText(TextSlot<char16_t> slot, std::size_t from, std::size_t to);

/// Removes every occurrence of `pattern`, ignoring case. The search starts again at the front
/// after each removal, so occurrences that a removal creates go too. Empty: removes nothing.
void removeAllIgnoreCase(TextSlot<char> slot, std::string_view pattern);

/// Appends `text` to `result` with every occurrence of `pattern`, ignoring case, replaced. One
/// pass from the left that goes on after the insertion; an empty pattern replaces nothing.
void appendReplaced(TextSlot<char> result, std::string_view text, std::string_view pattern,
                    std::string_view replacement);

/// Turns every character whose upper case equals the upper case of `from` into `to`.
void replaceCharIgnoreCase(TextSlot<char> slot, char from, char to);

/// True when both have the same length and equal upper-cased characters (two empty texts: true).
[[nodiscard]] bool equalsIgnoreCase(std::string_view a, std::string_view b);
[[nodiscard]] bool equalsIgnoreCase(std::u16string_view a, std::u16string_view b);

/// True when `text` begins (ends) with `pattern`, ignoring case. Only the first 500 characters of
/// the pattern count. False for an empty pattern, an empty text, or a pattern longer than the text.
[[nodiscard]] bool startsWithIgnoreCase(std::string_view text, std::string_view pattern);
[[nodiscard]] bool endsWithIgnoreCase(std::string_view text, std::string_view pattern);

/// Position of the first occurrence of `pattern` at or after `start`, ignoring case; -1 when
/// there is none or the pattern is empty.
[[nodiscard]] std::int32_t findIgnoreCase(std::string_view text, std::string_view pattern,
                                          std::size_t start = 0);

/// The last position not after `start` that holds exactly `c`; -1 when there is none. A start
/// beyond the text (the default) means its last character.
[[nodiscard]] std::int32_t findLastChar(std::string_view text, char c,
                                        std::size_t start = static_cast<std::size_t>(-1));

}  // namespace marrowbench

#endif
