#ifndef MARROWBENCH_MARROWCTL_PLAN_PATH_PATTERN_H
#define MARROWBENCH_MARROWCTL_PLAN_PATH_PATTERN_H

#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// Characters that stand for the client's name, the number of the iteration and the date.
inline constexpr char kHostMark = '\x01';
inline constexpr char kIterationMark = '\x02';
inline constexpr char kDateMark = '\x03';

[[nodiscard]] constexpr bool isMark(char c) { return c >= kHostMark && c <= kDateMark; }

/// A path as it is used, but with marks: one expansion for thousands of paths. Two patterns that
/// are alike name the same files.
struct PathPattern {
  std::string text;      ///< of a source or dest: empty for memory
  bool isExact = false;  ///< filling in the marks is surely the same as expanding the template
  /// Of a source or dest: the text in one spelling. Files are told apart by it.
  std::string name{};

  [[nodiscard]] bool has(char mark) const { return text.find(mark) != std::string::npos; }
  [[nodiscard]] bool isEmpty() const { return text.empty(); }
};

/// Those of a test line.
struct PathPatterns {
  PathPattern source, dest, log, table;
};

/// What takes the places of the marks.
struct MarkValues {
  std::string_view host, iteration, date;  ///< empty: the mark stays
};

/// The text with its marks filled in.
[[nodiscard]] std::string filledIn(std::string_view text, const MarkValues& values);

/// Characters of the longest name that may be filled in.
inline constexpr std::size_t kLongestHost = 64;

/// True for a client whose name may be filled in: up to kLongestHost letters, digits, "-" and "_".
[[nodiscard]] bool canBeFilledIn(std::string_view host);

}  // namespace marrowbench::ctl

#endif
