#ifndef MARROWBENCH_MARROWCTL_FLEET_READY_FILE_H
#define MARROWBENCH_MARROWCTL_FLEET_READY_FILE_H

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/fleet/ready_note.h"

namespace marrowbench::ctl {

/// A client that is armed touches its ready file so often; one untouched for kGoneSeconds has
/// nobody left: clients of shares remember times for up to a minute.
inline constexpr std::int64_t kTouchSeconds = 10;
inline constexpr std::int64_t kGoneSeconds = 150;

/// How a claim to something that only one may have came out.
struct Claim {
  enum class Kind { held, taken, failed, stopped };
  Kind kind = Kind::held;
  std::string reason;  ///< empty when held or stopped
};

/// A ready file as it was seen.
struct SeenReadyFile {
  std::int64_t modifiedMs = 0;  ///< by the share's clock
  ino_t number = 0;
  std::optional<ReadyNote> note;  ///< nothing: it holds none
};

/// Looks at a ready file by opening it: clients of shares ask the server then.
/// @return nothing: errno tells why
[[nodiscard]] std::optional<SeenReadyFile> seeReadyFile(const std::string& path);

/// The file by which this client shows that it waits. Whoever has created it owns it, as long as it
/// is touched.
class ReadyFile {
 public:
  /// What is asked between two looks at another's file, and who is told about the waiting.
  struct Watcher {
    std::function<bool()> isStopped;
    std::function<void(const std::string&)> say;
  };

  /// @param own  of this process; its host names the file
  ReadyFile(const ControlFolder& folder, ReadyNote own);

  /// Creates the file, in place of one that was left behind. Where another process of the same name
  /// may still live, waits until its file is touched or old enough.
  [[nodiscard]] Claim claim(const Watcher& watcher);

  /// Finds out whether the file is still this process's, as on some shares two win at creating one,
  /// and writes it anew. A file that is gone is made again.
  [[nodiscard]] Claim touch();

  /// Deletes the file if it is this process's.
  void remove();

  /// Version of the program, which the next touch() tells.
  void setProgramVersion(const std::string& version) { note.marrowbench = version; }

 private:
  [[nodiscard]] int create();
  [[nodiscard]] int write();
  [[nodiscard]] Claim waitFor(const SeenReadyFile& other, const Watcher& watcher) const;
  [[nodiscard]] Claim failed(int code) const;
  [[nodiscard]] Claim takenBy(const std::optional<ReadyNote>& other) const;

  std::string folderPath;
  std::string path;
  ReadyNote note;
  std::size_t length = 0;  // of the file
  int writes = 0;
  std::int64_t clockReadingMs = 0;  // that reading the share's clock took when the offset was taken
};

}  // namespace marrowbench::ctl

#endif
