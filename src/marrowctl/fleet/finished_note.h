#ifndef MARROWBENCH_MARROWCTL_FLEET_FINISHED_NOTE_H
#define MARROWBENCH_MARROWCTL_FLEET_FINISHED_NOTE_H

#include <optional>
#include <string>
#include <string_view>

#include "marrowctl/fleet/control_folder.h"

namespace marrowbench::ctl {

/// How a client's part in a run ended.
struct FinishedNote {
  std::string host;
  std::string run;
  std::string time;  ///< by the client's clock: ISO 8601
  int status = 0;    ///< exit status of "fleet arm": the program's, or 128 and the signal's number
  std::string message;  ///< why it ended, where the program did not end by itself; else empty
};

/// Writes the note into its place at once. @return errno of what failed
[[nodiscard]] int writeFinishedNote(const ControlFolder& folder, const FinishedNote& note);

/// What such a file holds; nothing: it is no note.
[[nodiscard]] std::optional<FinishedNote> finishedNoteFrom(std::string_view text);

}  // namespace marrowbench::ctl

#endif
