#ifndef MARROWBENCH_RESULTS_EXCLUSIVE_FILE_H
#define MARROWBENCH_RESULTS_EXCLUSIVE_FILE_H

#include <cstdio>
#include <optional>

#include "results/sighting.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// A file that only one client can create: who has created it owns it until it is removed.
///
/// The file stays open while it is owned: as long as it is, no local file system gives its number
/// to another one.
class ExclusiveFile {
 public:
  ExclusiveFile() = default;
  ExclusiveFile(const ExclusiveFile&) = delete;
  ExclusiveFile& operator=(const ExclusiveFile&) = delete;
  ~ExclusiveFile();

  /// Creates the file; this object must not own one.
  ///
  /// @return false when that fails; errno tells why, EEXIST when the file exists. Some shares have
  ///         no such answer and say EPERM.
  [[nodiscard]] bool create(const FixedString& filePath);

  [[nodiscard]] bool isOwned() const { return file != nullptr; }

  /// True when the file is certainly no longer the one at its path: it is gone, or another stands
  /// there. False also where the share does not tell.
  [[nodiscard]] bool isReplaced() const;

  /// Writes `note` in one piece and hands it to the system. A failure is silent. No other client
  /// should write the same: by it an owner that stood still knows its file again.
  void write(const FixedString& note);

  /// Closes and deletes the file; another one that stands in its place stays. Silent; nothing
  /// happens when no file is owned.
  ///
  /// @return false when the own file could not be deleted
  bool remove() noexcept;

 private:
  [[nodiscard]] bool isOwn(const Sighting& there) const;

  FixedString path;
  std::FILE* file = nullptr;
  FixedString text;             // that was written
  std::optional<Sighting> own;  // of the file when it was last written
  bool isGone = false;          // it was deleted before it could be seen
};

}  // namespace marrowbench

#endif
