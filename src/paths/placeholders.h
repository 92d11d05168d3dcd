#ifndef MARROWBENCH_PATHS_PLACEHOLDERS_H
#define MARROWBENCH_PATHS_PLACEHOLDERS_H

#include <cstdint>

#include "support/fixed_string.h"

namespace marrowbench {

struct TestConfig;

/// Replaces the bracketed placeholders in `text`, in any case and wherever they stand, then
/// normalises it as a path. What passes 500 characters is cut; unknown brackets stay.
///
/// In this order, each on the result of the one before: "[host]"; "[date]" (fileStamp of now, the
/// same for the whole call); "[iter]"; "[cfgline]" and "[cfgTaskID]", the same number; "[cfgID]",
/// the number at the end of the settings file's name; "[cfgLogName]", "_NAME_log"; "[cfgNameID]",
/// the settings file's name; "[cfgName]", that name without trailing digits, "-" and one "_init";
/// "[cfgPath]", the settings file's folder; "[temp]", the temporary folder.
///
/// @param config       its settings file path and number are read
/// @param text         expanded in place
/// @param cfgLine      number of the settings line, 0 for the first test
/// @param iteration    number of the iteration, 0 for the first
/// @param keepCfgPath  leaves "[cfgPath]" in the text
void expandPlaceholders(const TestConfig& config, FixedString& text, std::int32_t cfgLine,
                        std::int32_t iteration, bool keepCfgPath);

}  // namespace marrowbench

#endif
