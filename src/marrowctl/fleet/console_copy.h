#ifndef MARROWBENCH_MARROWCTL_FLEET_CONSOLE_COPY_H
#define MARROWBENCH_MARROWCTL_FLEET_CONSOLE_COPY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// What the program prints, on its way into a file of the control folder, and what it tells of the
/// program's state.
///
/// The program prints into a file of this machine that has no name: neither a share that hangs nor
/// a terminal that is stopped can hold up what is measured.
class ConsoleCopy {
 public:
  /// @param filePath  where the copy is kept
  explicit ConsoleCopy(std::string filePath) : path(std::move(filePath)) {}
  ConsoleCopy(const ConsoleCopy&) = delete;
  ConsoleCopy& operator=(const ConsoleCopy&) = delete;
  ~ConsoleCopy();

  /// Makes the file that the program is to print into. @return errno of what failed
  [[nodiscard]] int open();
  [[nodiscard]] int descriptor() const { return printed; }

  /// Reads what was printed since the last call. @return it, valid until the next call
  [[nodiscard]] std::string_view follow();

  /// Appends what was followed since the last call to the copy; the first call makes it anew. What
  /// can't be written is tried again. @return errno of what failed
  [[nodiscard]] int save();

  /// Version of the program, from its banner; empty until it came.
  [[nodiscard]] const std::string& programVersion() const { return version; }

  /// The settings file that the program waits for; empty while it runs tests or has not begun.
  [[nodiscard]] const std::string& awaited() const { return awaitedPath; }

 private:
  void takeLine();

  std::string path;
  int printed = -1;
  std::int64_t followed = 0;  // bytes
  std::int64_t saved = 0;
  std::string piece;
  std::string line;  // the part of the last line that came so far
  std::string version;
  std::string awaitedPath;
  bool isBegun = false;  // the copy is of this run
};

}  // namespace marrowbench::ctl

#endif
