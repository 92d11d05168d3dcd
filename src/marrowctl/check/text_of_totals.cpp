#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "marrowctl/check/text_parts.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kShownEntries = 5;

std::string entry(std::string_view name, const std::string& value) {
  return fmt::format("  {:<14} {}\n", name, value);
}

std::string sizeEntry(std::string_view name, std::int64_t bytes, std::int64_t clients) {
  const bool isEven = clients > 1 && bytes > 0 && bytes % clients == 0;
  return entry(name, isEven ? fmt::format("{} ({} by each client)", shownSize(bytes),
                                          shownSize(bytes / clients))
                            : shownSize(bytes));
}

std::string rowsEntry(const Totals& totals) {
  if (totals.clients == 1) return entry("rows", shownCount(totals.rows));
  return entry("rows", fmt::format("{} ({} of each client)", shownCount(totals.rows),
                                   shownCount(totals.rowsPerClient)));
}

std::string spaceText(const Totals& totals) {
  std::string text;
  std::size_t shown = 0;
  for (const auto& [folder, bytes] : totals.spaceByFolder) {
    if (++shown > kShownEntries) break;
    text +=
        entry(shown == 1 ? "new files" : "",
              fmt::format("{} in {}", shownSize(bytes), folder.empty() ? "." : printable(folder)));
  }
  if (totals.spaceByFolder.size() <= kShownEntries) return text;
  const auto more = static_cast<std::int64_t>(totals.spaceByFolder.size() - kShownEntries);
  return text + entry("", "and in " + shownCount(more, "more folder"));
}

std::string markersText(const Totals& totals) {
  std::string text;
  const std::size_t shown = std::min(totals.markers.size(), kShownEntries);
  for (std::size_t i = 0; i < shown; ++i) {
    text += entry(i == 0 ? "markers" : "", printable(totals.markers[i]));
  }
  if (totals.markers.size() <= kShownEntries) return text;
  const auto more = static_cast<std::int64_t>(totals.markers.size() - kShownEntries);
  return text + entry("", fmt::format("and {} more", shownCount(more)));
}

}  // namespace

std::string totalsText(const Totals& totals, const TextStyle& style) {
  const std::string heading = "Total for " + shownCount(totals.clients, "client");
  const std::string_view unknown =
      totals.unknownSizes.empty() ? "" : ", and what is not known here";
  std::string text = toned(heading, Tone::strong, style) + "\n";
  text += rowsEntry(totals);
  text += sizeEntry("written", totals.bytesWritten, totals.clients);
  text += sizeEntry("read", totals.bytesRead, totals.clients);
  text.insert(text.size() - 1, unknown);
  text += entry("files left", shownCount(totals.filesLeft));
  text += spaceText(totals);
  text += entry("at least",
                fmt::format("{} of pauses on each client", shownDuration(totals.pauseSeconds)));
  text += entry("memory", shownSize(totals.memoryBytes) + " on each client");
  return text + markersText(totals);
}

}  // namespace marrowbench::ctl
