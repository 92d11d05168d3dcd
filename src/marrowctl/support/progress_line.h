#ifndef MARROWBENCH_MARROWCTL_SUPPORT_PROGRESS_LINE_H
#define MARROWBENCH_MARROWCTL_SUPPORT_PROGRESS_LINE_H

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace marrowbench::ctl {

/// Says how far long work is: on a terminal in one line that is drawn anew in its place, elsewhere
/// in a plain line now and then. The line is taken away at the end, also by a signal that ends the
/// program. There is one at a time.
class ProgressLine {
 public:
  /// @param front    stands in front of a plain line: "marrowctl run: "
  /// @param quietMs  nothing is shown so long: what is done sooner needs no line
  ProgressLine(std::string front, std::int64_t quietMs, std::FILE* output = stderr);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine() { clear(); }

  /// True when it is time for the next text.
  [[nodiscard]] bool isDue() const;

  /// Shows a text. @pre isDue(), or there is news that should not wait
  void show(const std::string& text);

  /// Takes the line away, so that something else can be printed.
  void clear();

  /// Milliseconds since it was made.
  [[nodiscard]] std::int64_t age() const;

 private:
  std::string front;
  std::int64_t quietMs;
  std::FILE* out;
  bool isOnTerminal;
  bool isVisible = false;
  std::int64_t madeAt = 0;
  std::optional<std::int64_t> shownAt;
};

/// Seconds that work will still take which goes on as it did; nothing: too early to tell.
///
/// @param elapsedMs  since it began
[[nodiscard]] std::optional<std::int64_t> secondsLeft(std::int64_t elapsedMs, double done,
                                                      double all);

}  // namespace marrowbench::ctl

#endif
