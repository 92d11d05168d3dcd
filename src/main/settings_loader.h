#ifndef MARROWBENCH_MAIN_SETTINGS_LOADER_H
#define MARROWBENCH_MAIN_SETTINGS_LOADER_H

#include <cstdint>
#include <span>

#include "settings/test_config.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// Waits until `path` is an existing file, a dot on the console every 5 s.
///
/// @return true when it was there at the first look
bool waitForSettingsFile(const FixedString& path);

struct LoadedSettings {
  std::int32_t count = 0;  ///< records filled, from the front of the table
  FixedString nextPath;    ///< the settings file that a chain line names; empty: none
};

/// Reads a settings file into the table. A file that can't be opened has no lines. A rejected line
/// is printed and passed over, so is a test line for which the table has no room; a chain line ends
/// the reading.
LoadedSettings loadSettings(const FixedString& path, std::span<TestConfig> table);

}  // namespace marrowbench

#endif
