#include "marrowctl/main/read_tables.h"

#include <fmt/format.h>

#include <cstdint>
#include <optional>

#include "marrowctl/support/progress_line.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

// What is done sooner needs no line.
constexpr std::int64_t kQuietMs = 1000;
constexpr std::uint64_t kMib = 1 << 20;

std::string shownMib(std::uint64_t bytes) {
  return shownCount(static_cast<std::int64_t>(bytes / kMib));
}

std::string textOf(const ReadProgress& far, std::int64_t elapsedMs) {
  // The standard input does not tell its size.
  const bool isKnown = far.allBytes >= far.bytes;
  std::string text = fmt::format("reading, {}{} MiB", shownMib(far.bytes),
                                 isKnown ? " of " + shownMib(far.allBytes) : "");
  if (far.tables > 1) {
    text += fmt::format(", table {} of {}", shownCount(static_cast<std::int64_t>(far.table)),
                        shownCount(static_cast<std::int64_t>(far.tables)));
  }
  const auto left =
      secondsLeft(elapsedMs, static_cast<double>(far.bytes), static_cast<double>(far.allBytes));
  return left ? text + ", " + shownDuration(*left) + " left" : text;
}

}  // namespace

ReadOutcome readTables(const std::string& subcommand, ReadOptions options) {
  ProgressLine line("marrowctl " + subcommand + ": ", kQuietMs);
  options.progress = [&line](const ReadProgress& far) {
    if (line.isDue()) line.show(textOf(far, line.age()));
  };
  return readResults(options);
}

}  // namespace marrowbench::ctl
