#ifndef MARROWBENCH_MARROWCTL_TABLE_PATH_SHAPE_H
#define MARROWBENCH_MARROWCTL_TABLE_PATH_SHAPE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Millions of rows have different paths, but few of them differ in more than their numbers. A text
/// is kept as its shape, which many rows share, and the numbers that are left out of it.
namespace marrowbench::ctl {

/// Stands in a shape where a number is left out. In a path or an error text it means nothing.
inline constexpr char kNumberMark = '\x01';

/// Longer runs of digits count as several numbers.
inline constexpr std::size_t kDigitsOfNumber = 18;

/// Digits of one number, with its leading zeros: "1" and the digits, as a decimal number.
using Digits = std::uint64_t;

/// The digits as text. @pre made by appendShape()
[[nodiscard]] std::string textOf(Digits digits);

/// The number that the digits mean, 7 for "007".
[[nodiscard]] std::int64_t valueOf(Digits digits);

/// True when the digits begin with a needless zero.
[[nodiscard]] bool hasLeadingZero(Digits digits);

/// Appends the shape of a text to `shape` and its numbers to `numbers`.
///
/// @return false when the text holds a kNumberMark of its own: it has no shape then
[[nodiscard]] bool appendShape(std::string_view text, std::string& shape,
                               std::vector<Digits>& numbers);

/// Tells whether texts have one shape, which is quicker than to make the shape of each.
class ShapeMatcher {
 public:
  /// The empty shape.
  ShapeMatcher() : ShapeMatcher(std::string_view()) {}
  explicit ShapeMatcher(std::string_view shape);

  /// Appends the numbers of the text to `numbers`; where it has another shape, some may have been
  /// appended.
  [[nodiscard]] bool matches(std::string_view text, std::vector<Digits>& numbers) const;

 private:
  std::string fixed;  // the shape without its marks
  std::vector<std::size_t>
      lengths;  // of what stands in front of each mark, and behind the last one
};

/// The text of a shape. @param numbers  as many as there are marks; moved behind those that it took
[[nodiscard]] std::string filledShape(std::string_view shape, const Digits*& numbers);

/// Where numbers of a shape stand in its text: position and length of each.
///
/// @param numbers  as for filledShape()
void appendSpans(std::string_view shape, const Digits*& numbers,
                 std::vector<std::pair<std::size_t, std::size_t>>& spans);

[[nodiscard]] std::size_t marksIn(std::string_view shape);

/// Appends a number in as few bytes as it needs: seven bits in each, the lowest first.
void appendPacked(std::uint64_t number, std::vector<std::uint8_t>& bytes);

/// The number at `bytes`, which is moved behind it.
[[nodiscard]] inline std::uint64_t takePacked(const std::uint8_t*& bytes) {
  std::uint64_t number = 0;
  for (unsigned shift = 0;; shift += 7) {
    const std::uint8_t byte = *bytes++;
    number |= std::uint64_t{byte & 0x7FU} << shift;
    if (byte < 0x80U) return number;
  }
}

}  // namespace marrowbench::ctl

#endif
