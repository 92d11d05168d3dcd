#ifndef MARROWBENCH_MARROWCTL_FLEET_PUBLISHED_NOTE_H
#define MARROWBENCH_MARROWCTL_FLEET_PUBLISHED_NOTE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/fleet/start_window.h"

namespace marrowbench::ctl {

/// What was known when a settings file was published, for those that watch the run.
struct PublishedNote {
  std::string run;
  int phase = 1;
  std::string time;                ///< of the publisher's clock: ISO 8601
  std::vector<std::string> hosts;  ///< clients that were ready
  ClockSpan clocks;
  /// Sizes of tables that were there before: their rows are of earlier runs. Those in the run's
  /// folder by their path in it.
  std::map<std::string, std::int64_t> tables;
};

/// The note as one line of JSON, docs/schemas/published.schema.json.
[[nodiscard]] std::string textOf(const PublishedNote& note);

/// What such a file holds; nothing: it is no note.
[[nodiscard]] std::optional<PublishedNote> publishedNoteFrom(std::string_view text);

}  // namespace marrowbench::ctl

#endif
