#ifndef MARROWBENCH_MARROWCTL_FLEET_READY_NOTE_H
#define MARROWBENCH_MARROWCTL_FLEET_READY_NOTE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/fleet/machine_facts.h"

namespace marrowbench::ctl {

/// What a client says of itself in its ready file.
struct ReadyNote {
  std::string host;  ///< as the program calls this machine
  std::string run;
  std::string id;    ///< of this process and no other one, on whatever machine
  std::string time;  ///< when it was armed, by its own clock: ISO 8601
  std::optional<std::int64_t> clockOffsetMs;  ///< its clock ahead of the share's; not yet measured
  std::int64_t pid = 0;
  std::string marrowctl;                   ///< version
  std::optional<std::string> marrowbench;  ///< version; nothing: the program does not run yet
  MachineFacts machine;
};

/// The note as one line of JSON, docs/schemas/ready.schema.json, padded with blanks to at least
/// this many bytes: written over an older one, it covers it.
[[nodiscard]] std::string textOf(const ReadyNote& note, std::size_t atLeast);

/// What a ready file holds; nothing: it is no note.
[[nodiscard]] std::optional<ReadyNote> readyNoteFrom(std::string_view text);

/// The note of this machine, for a process that starts now.
[[nodiscard]] ReadyNote noteOfThisMachine(const ControlFolder& folder, const std::string& version);

}  // namespace marrowbench::ctl

#endif
