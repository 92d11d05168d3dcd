#ifndef MARROWBENCH_MARROWCTL_MAIN_LIVE_SCREEN_H
#define MARROWBENCH_MARROWCTL_MAIN_LIVE_SCREEN_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "marrowctl/support/terminal.h"

namespace marrowbench::ctl {

/// Lines on a terminal that are drawn anew in their place; below it where the terminal has become
/// narrower, or has shown something else while the program was stopped. The last ones stay when it
/// goes. The cursor is hidden meanwhile, and comes back at its end and when the program is stopped
/// (^Z) or quits (^\).
class LiveScreen {
 public:
  /// @param terminal  kept open by the caller
  explicit LiveScreen(std::FILE* terminal);
  LiveScreen(const LiveScreen&) = delete;
  LiveScreen& operator=(const LiveScreen&) = delete;
  ~LiveScreen();

  /// Style for the terminal as wide as it is now, however narrow.
  [[nodiscard]] TextStyle style() const;
  /// Lines that the terminal can show.
  [[nodiscard]] int height() const;

  /// Draws the lines in place of those drawn before. @param lines  at most height() of them, none
  /// wider than the style's width
  void draw(const std::vector<std::string>& lines);

 private:
  std::FILE* out;
  std::size_t drawn = 0;  // lines
  int drawnWidth = 0;     // columns that the terminal had then
};

}  // namespace marrowbench::ctl

#endif
