#ifndef MARROWBENCH_MARROWCTL_RUN_CONSOLE_FILE_H
#define MARROWBENCH_MARROWCTL_RUN_CONSOLE_FILE_H

#include <cstdint>
#include <string>

namespace marrowbench::ctl {

/// Keeps what a program prints: a new file in the temporary folder, into which the program writes
/// itself, so that nobody who reads along can make it wait.
class ConsoleFile {
 public:
  /// @param name  part of the file's name
  explicit ConsoleFile(const std::string& name);
  ConsoleFile(const ConsoleFile&) = delete;
  ConsoleFile& operator=(const ConsoleFile&) = delete;
  ~ConsoleFile();

  /// errno of its making; 0: it is there.
  [[nodiscard]] int failure() const { return code; }
  [[nodiscard]] const std::string& path() const { return name_; }
  /// For the program; closed here at the end.
  [[nodiscard]] int descriptor() const { return file; }

  /// What was written since the last call, at most some KiB; empty: nothing.
  [[nodiscard]] std::string more();

 private:
  std::string name_;
  int file = -1;
  int code = 0;
  std::int64_t read = 0;
};

}  // namespace marrowbench::ctl

#endif
