#ifndef MARROWBENCH_MARROWCTL_SUPPORT_UNITS_H
#define MARROWBENCH_MARROWCTL_SUPPORT_UNITS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Figures with their units, as people write and read them.
namespace marrowbench::ctl {

/// The bytes of a size: a whole number and a unit, with or without a blank between them and in any
/// case: "B", "K" or "KiB" (1,024), "M" or "MiB", "G" or "GiB". "MB" and the like are refused: they
/// mean powers of ten elsewhere.
///
/// @param bareUnit  what a number without a unit counts, in bytes
/// @return nothing for any other text and for what does not fit 63 bits
[[nodiscard]] std::optional<std::int64_t> bytesOf(std::string_view text, std::int64_t bareUnit = 1);

/// The seconds of a span of time: a whole number and a unit, "s" (as without one), "m", "h" or "d".
/// Nothing for any other text and for more than 36,500 days.
[[nodiscard]] std::optional<std::int64_t> secondsOf(std::string_view text);

/// An exact size in the largest unit that needs at most three decimals: "4 KiB", "1.5 MiB",
/// "1,025 KiB", "17 bytes".
[[nodiscard]] std::string shownSize(std::int64_t bytes);

/// A number with its thousands apart: "1,048,576".
[[nodiscard]] std::string shownCount(std::int64_t count);

/// The number and its word: "1 row", "2,000 rows". @param word  in the singular
[[nodiscard]] std::string shownCount(std::int64_t count, std::string_view word);

/// "45 s", "2 min 5 s", "1 h 0 min 3 s".
[[nodiscard]] std::string shownDuration(std::int64_t seconds);

}  // namespace marrowbench::ctl

#endif
