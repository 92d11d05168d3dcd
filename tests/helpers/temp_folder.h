#ifndef MARROWBENCH_TESTS_HELPERS_TEMP_FOLDER_H
#define MARROWBENCH_TESTS_HELPERS_TEMP_FOLDER_H

#include <filesystem>
#include <string>
#include <string_view>

#include "support/fixed_string.h"

namespace marrowbench::test {

/// A fresh folder that goes away with everything in it.
class TempFolder {
 public:
  TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder();

  /// The folder's path without a trailing "/".
  [[nodiscard]] const std::string& path() const { return folder; }
  /// The path of something in it.
  [[nodiscard]] FixedString file(std::string_view name) const;
  /// The same with a name that makes the path so many characters long.
  [[nodiscard]] FixedString fileOfLength(std::size_t length) const;

 private:
  std::string folder;
};

/// A fresh folder that is the process's folder as long as it lives.
class WorkingFolder : public TempFolder {
 public:
  WorkingFolder();
  ~WorkingFolder();

 private:
  std::filesystem::path before;
};

/// Creates or replaces a file.
void writeFile(const FixedString& path, std::string_view content);
/// The content of a file, empty when there is none.
[[nodiscard]] std::string readFile(const FixedString& path);
/// True when something stands at the path, a dangling link included.
[[nodiscard]] bool exists(const FixedString& path);
/// Sets access and modification time, seconds since the epoch.
void setModified(const FixedString& path, std::int64_t seconds);
}  // namespace marrowbench::test

#endif
