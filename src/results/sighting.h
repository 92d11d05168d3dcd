#ifndef MARROWBENCH_RESULTS_SIGHTING_H
#define MARROWBENCH_RESULTS_SIGHTING_H

#include <sys/types.h>

#include <cstdint>
#include <optional>

#include "support/fixed_string.h"

namespace marrowbench {

/// Which file stood at a path, and when it was changed last.
///
/// The number alone does not tell two files from each other: a server may give the number of a
/// deleted file to the next one, and sshfs has one number for each path.
struct Sighting {
  dev_t device = 0;
  ino_t number = 0;
  std::int64_t modified = 0;  ///< seconds since the epoch, by the server's clock

  [[nodiscard]] bool hasNumberOf(const Sighting& other) const {
    return device == other.device && number == other.number;
  }
  bool operator==(const Sighting&) const = default;
};

/// What stands at `path` as this machine knows it. Nothing for a folder and when it can't be asked;
/// errno tells why.
[[nodiscard]] std::optional<Sighting> see(const FixedString& path);

/// The same after the file was opened: clients of shares ask the server then, where they answer
/// see() from their memory. A file that can't be opened is asked as see() does.
[[nodiscard]] std::optional<Sighting> seeByOpening(const FixedString& path);

/// What an open descriptor belongs to.
[[nodiscard]] std::optional<Sighting> seeOpen(int descriptor);

/// Whether an own file, as it was when it was written, and the one that stands in its place may be
/// one. The last write of a file may reach its server seconds late, so their times may differ by
/// less than 9 s; a file that took the own one's place is ten seconds younger, for which its client
/// has looked.
[[nodiscard]] bool mayBeOne(const Sighting& own, const Sighting& there);

/// Whether the file seen first and now was left behind by a client that ended: it is still the same
/// one, and more than 10,800 s old by this client's clock.
[[nodiscard]] bool isAbandoned(const std::optional<Sighting>& first,
                               const std::optional<Sighting>& now);

}  // namespace marrowbench

#endif
