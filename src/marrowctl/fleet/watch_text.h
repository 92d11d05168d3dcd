#ifndef MARROWBENCH_MARROWCTL_FLEET_WATCH_TEXT_H
#define MARROWBENCH_MARROWCTL_FLEET_WATCH_TEXT_H

#include <string>
#include <vector>

#include "marrowctl/fleet/run_state.h"
#include "marrowctl/support/terminal.h"

/// How far a run is, for people and programs.
namespace marrowbench::ctl {

/// The live table: lines without line feeds, none wider than the style's width.
///
/// @param height  at most so many lines; at least 4 are made
[[nodiscard]] std::vector<std::string> watchTable(const RunState& state, const TextStyle& style,
                                                  int height);

/// The same in one line, where there is no terminal: with the time of day, without a line feed.
[[nodiscard]] std::string watchLine(const RunState& state);

/// One document by docs/schemas/watch.schema.json.
[[nodiscard]] std::string watchJson(const RunState& state);

}  // namespace marrowbench::ctl

#endif
