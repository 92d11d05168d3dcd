#ifndef MARROWBENCH_MARROWCTL_REPORT_OUTPUT_H
#define MARROWBENCH_MARROWCTL_REPORT_OUTPUT_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "marrowctl/report/report.h"
#include "marrowctl/support/terminal.h"

namespace marrowbench::ctl {

/// The verdict, a line for each test and what is doubtful, for people.
[[nodiscard]] std::string reportText(const Report& report, const TextStyle& style);

/// The whole report by docs/schemas/report.schema.json.
[[nodiscard]] std::string reportJson(const Report& report);

/// One row for each row of the judged runs, in the form of RFC 4180, for spreadsheets and programs.
///
/// @param write  called with one piece after the other; false: it could not be written
/// @return false as soon as `write` returns it
[[nodiscard]] bool writeTidy(const Report& report,
                             const std::function<bool(std::string_view)>& write);

/// 0 when nothing is known to be missing, concurrency is not refuted and all is clean; else 1.
[[nodiscard]] int exitStatusOf(const Report& report);

/// "2026-11-16T02:21:29+01:00": local time with its distance from UTC.
[[nodiscard]] std::string isoTime(std::int64_t seconds);

}  // namespace marrowbench::ctl

#endif
