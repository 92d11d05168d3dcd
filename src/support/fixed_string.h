#ifndef MARROWBENCH_SUPPORT_FIXED_STRING_H
#define MARROWBENCH_SUPPORT_FIXED_STRING_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "support/fixed_string_ops.h"

namespace marrowbench {

/// What stands in front of the characters: the 16-bit length, and for 16-bit characters two
/// zero bytes more.
template <class Char>
struct FixedStringHead {
  std::uint16_t length = 0;
};
template <>
struct FixedStringHead<char16_t> {
  std::uint16_t length = 0;
  std::uint16_t zero = 0;
};

/// A text of at most `Capacity` characters, held inline and copied by value.
///
/// Overlong input is never an error: every operation silently cuts at the capacity. Every
/// storage character beyond the length is zero after each change, so a value can be compared or
/// copied as raw bytes. Nothing allocates.
template <class Char, std::size_t Capacity>
class BasicFixedString {
 public:
  using View = std::basic_string_view<Char>;

  constexpr BasicFixedString() = default;
  /// Implicit, so that callers stay readable; they cut like assign().
  BasicFixedString(const Char* text) { assign(text); }
  BasicFixedString(View text) { assign(text); }

  void clear() { assign(View{}); }

  /// A null pointer clears. Otherwise the first min(length modulo 65,536, Capacity) characters.
  void assign(const Char* text) { assign(text == nullptr ? View{} : View(text)); }
  void assign(View text) { assignText(slot(), text); }

  /// 16-bit strings only: every byte becomes one character by sign extension.
  void assignBytes(std::string_view bytes) requires(std::is_same_v<Char, char16_t>) {
    assignText(slot(), bytes);
  }

  /// 8-bit strings only: the low byte of every character.
  void assignNarrowed(std::u16string_view wide) requires(std::is_same_v<Char, char>) {
    assignText(slot(), wide);
  }

  /// Adds what still fits; the rest is dropped.
  BasicFixedString& append(View text) {
    appendText(slot(), text);
    return *this;
  }
  BasicFixedString& append(Char c) { return append(View(&c, 1)); }

  /// Cuts to `length`, moved into 0..Capacity.
  void truncate(std::int32_t length) { truncateText(slot(), length); }

  /// Removes positions `from` up to, not including, `to`.
  void erase(std::size_t from, std::size_t to) { eraseText(slot(), from, to); }

  void removeAllIgnoreCase(View pattern) { marrowbench::removeAllIgnoreCase(slot(), pattern); }

  /// Every occurrence, ignoring case, in one pass; only the final result is cut at the capacity.
  void replaceAll(View pattern, View replacement) {
    BasicFixedString result;
    appendReplaced(result.slot(), view(), pattern, replacement);
    *this = result;
  }

  void replaceCharIgnoreCase(Char from, Char to) {
    marrowbench::replaceCharIgnoreCase(slot(), from, to);
  }

  [[nodiscard]] bool isEmpty() const { return head.length == 0; }
  [[nodiscard]] bool isNotEmpty() const { return head.length != 0; }
  [[nodiscard]] std::size_t length() const { return head.length; }
  [[nodiscard]] static constexpr std::size_t capacity() { return Capacity; }
  [[nodiscard]] View view() const { return {storage, head.length}; }
  operator View() const { return view(); }
  /// The characters followed by a NUL.
  [[nodiscard]] const Char* c_str() const { return storage; }

  friend bool operator==(const BasicFixedString& a, const BasicFixedString& b) {
    return a.view() == b.view();
  }

 private:
  // Room for the closing NUL, rounded up so that the object has no padding bytes.
  static constexpr std::size_t kStorage =
      sizeof(Char) == 1 ? Capacity + 1 + (Capacity + 1) % 2 : Capacity + 1;
  static_assert(Capacity < 65536);

  TextSlot<Char> slot() { return {storage, &head.length, Capacity}; }

  FixedStringHead<Char> head;
  Char storage[kStorage] = {};
};

/// Paths, names, messages, error texts.
using FixedString = BasicFixedString<char, 500>;
/// Text handed to the text file writer; one line of the results table.
using TextBuffer = BasicFixedString<char, 5000>;
/// Time stamps, environment values, texts of the system.
using ShortText = BasicFixedString<char, 250>;
/// Name of a network interface.
using InterfaceName = BasicFixedString<char, 50>;
/// The decimal point of a locale.
using TinyText = BasicFixedString<char, 10>;
/// One settings line or one of its fields.
using LineString = BasicFixedString<char16_t, 1000>;
/// Results path, lock file name and owner text of the results lock.
using WideFixedString = BasicFixedString<char16_t, 250>;

static_assert(sizeof(FixedString) == 504);
static_assert(sizeof(LineString) == 2006);
static_assert(std::is_trivially_copyable_v<FixedString>);
static_assert(std::has_unique_object_representations_v<FixedString>);
static_assert(std::has_unique_object_representations_v<LineString>);

/// The low bytes of the first min(length, Capacity) characters.
template <std::size_t Capacity>
[[nodiscard]] BasicFixedString<char, Capacity> narrowedText(std::u16string_view wide) {
  BasicFixedString<char, Capacity> result;
  result.assignNarrowed(wide);
  return result;
}

}  // namespace marrowbench

#endif
