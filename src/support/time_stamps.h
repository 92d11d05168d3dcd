#ifndef MARROWBENCH_SUPPORT_TIME_STAMPS_H
#define MARROWBENCH_SUPPORT_TIME_STAMPS_H

#include <cstdint>

#include "support/fixed_string.h"

/// The three texts for a time in seconds since the epoch, all in local time. The process calls
/// tzset() once at start.
namespace marrowbench {

/// Console and done marker: month, day, hour, minute, second, as in "11.20. 23:21.05".
[[nodiscard]] ShortText shortStamp(std::int64_t t);

/// Rows and table: "Nov 20. 23:21.05". A negative time gives "--.-", 0 gives "-.-".
[[nodiscard]] ShortText dateText(std::int64_t t);

/// For names of files: month, day, hour, minute and the tens of the second, as in "1120_23210".
/// 0 gives "000000_000".
[[nodiscard]] ShortText fileStamp(std::int64_t t);

}  // namespace marrowbench

#endif
