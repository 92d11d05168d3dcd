#ifndef MARROWBENCH_MARROWCTL_REPORT_TEXT_PARTS_H
#define MARROWBENCH_MARROWCTL_REPORT_TEXT_PARTS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "marrowctl/report/report.h"
#include "marrowctl/support/terminal.h"

/// The parts of the report for people, each with a line feed at its end, or empty.
namespace marrowbench::ctl {

[[nodiscard]] std::string verdictText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string testsText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string interfacesText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string stragglersText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string suspicionsText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string missingRowsText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string damagedRowsText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string badRowsText(const Report& report, const TextStyle& style);
[[nodiscard]] std::string legendText(const Report& report, const TextStyle& style);

/// "1,118.2": a decimal below 10,000, two below 10.
[[nodiscard]] std::string shownSpeed(double mibPerSecond);

/// A bar of a share of `columns`, in eighths of a column, or in "#" without block characters; with
/// blanks behind it up to `columns`.
[[nodiscard]] std::string bar(double share, int columns, const TextStyle& style);

/// The text with blanks in front of it or behind it, up to so many columns.
[[nodiscard]] std::string rightIn(std::string_view text, int columns);
[[nodiscard]] std::string leftIn(std::string_view text, int columns);

/// A title between parts.
[[nodiscard]] std::string titleText(std::string_view title, const TextStyle& style);

}  // namespace marrowbench::ctl

#endif
