#ifndef MARROWBENCH_MARROWCTL_FLEET_OPEN_FILE_H
#define MARROWBENCH_MARROWCTL_FLEET_OPEN_FILE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// A file of the control folder while it is open. Programs that are started do not get it.
class OpenFile {
 public:
  /// @param flags  those of open(); a file that is made may be read and written by all, before the
  ///               process's umask
  OpenFile(const std::string& path, int flags);
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { (void)close(); }

  /// False: errno tells why.
  [[nodiscard]] bool isOpen() const { return number >= 0; }
  [[nodiscard]] int descriptor() const { return number; }

  /// Its first bytes, at most 1 MiB. @return errno of what failed
  [[nodiscard]] int read(std::string& text) const;

  /// Writes all of the text. @return errno of what failed
  [[nodiscard]] int writeAt(std::int64_t position, std::string_view text) const;
  /// The same behind what was written before.
  [[nodiscard]] int write(std::string_view text) const;

  /// Some shares tell only here that what was written did not arrive. @return errno of that
  [[nodiscard]] int close();

 private:
  int number;
};

/// The first MiB of a file at most; empty where it can't be read.
[[nodiscard]] std::string textIn(const std::string& path);

}  // namespace marrowbench::ctl

#endif
