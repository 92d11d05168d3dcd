#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "marrowctl/check/output.h"
#include "marrowctl/check/text_parts.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr int kMargin = 4;
// Of one kind in one file; --format gcc and --json show all.
constexpr int kShownOfKind = 5;

Tone toneOf(Severity severity) {
  switch (severity) {
    case Severity::error: return Tone::red;
    case Severity::warning: return Tone::yellow;
    case Severity::note: return Tone::cyan;
  }
  return Tone::plain;
}

std::string placeOf(const Finding& finding) {
  std::string file = printable(finding.file);
  if (!finding.line) return file;
  return fmt::format("{}:{}:{}", file, *finding.line, finding.column.value_or(1));
}

// The first line of a wrapped text stands further to the left.
std::string headingOf(const Finding& finding, const TextStyle& style) {
  const std::string place = placeOf(finding) + ":";
  const std::string severity = std::string(nameOf(finding.severity)) + ":";
  std::string text = wrapped(
      fmt::format("{} {} {} [{}]", place, severity, printable(finding.message), finding.name),
      kMargin, style.width);
  text.erase(0, kMargin);
  const std::string front = place + " " + severity;
  if (!text.starts_with(front)) return text;
  return toned(place, Tone::strong, style) + " " +
         toned(severity, toneOf(finding.severity), style) + text.substr(front.size());
}

struct Window {
  std::string text;
  std::size_t caret = 0;  // columns in front of it
};

// Byte positions at which characters of the printable line begin correspond to those of the raw
// line, so both are walked together.
std::string columnsUpTo(std::string_view line, std::size_t bytes) {
  return printable(line.substr(0, std::min(bytes, line.size())));
}

std::string dropped(std::string_view text, std::size_t columns) {
  while (columns-- > 0 && !text.empty()) {
    text.remove_prefix(std::max<std::size_t>(characterLength(text), 1));
  }
  return std::string(text);
}

std::string kept(std::string_view text, std::size_t columns) {
  const std::string rest = dropped(text, columns);
  return std::string(text.substr(0, text.size() - rest.size()));
}

// As much of a long line as there is room for, with the caret in it.
Window windowOf(const Finding& finding, std::size_t room) {
  const auto position = static_cast<std::size_t>(std::max(finding.column.value_or(1), 1)) - 1;
  std::string line = printable(finding.lineText);
  std::size_t caret = columnsOf(columnsUpTo(finding.lineText, position));
  if (columnsOf(line) > room && caret > room / 2) {
    const std::size_t from = caret - room / 2;
    line = "..." + dropped(line, from);
    caret = caret - from + 3;
  }
  if (columnsOf(line) > room) line = kept(line, room - 3) + "...";
  while (line.ends_with(' ')) line.pop_back();
  return {line, caret};
}

std::string lineWithCaret(const Finding& finding, const TextStyle& style) {
  if (finding.lineText.empty()) return {};
  const auto room = static_cast<std::size_t>(std::max(style.width - kMargin, kMargin));
  const Window window = windowOf(finding, room);
  const std::string margin(kMargin, ' ');
  return margin + window.text + "\n" + margin + std::string(window.caret, ' ') +
         toned("^", Tone::green, style) + "\n";
}

std::string findingText(const Finding& finding, const TextStyle& style) {
  return headingOf(finding, style) + lineWithCaret(finding, style) +
         wrapped("-> " + printable(finding.remedy), kMargin, style.width);
}

using KindInFile = std::pair<std::string_view, std::string_view>;

std::string restText(const KindInFile& kind, int count) {
  return fmt::format("{}: {} more of {}: --format gcc shows them\n", printable(kind.first),
                     shownCount(count), kind.second);
}

}  // namespace

std::string_view nameOf(Severity severity) {
  switch (severity) {
    case Severity::error: return "error";
    case Severity::warning: return "warning";
    case Severity::note: return "note";
  }
  return "";
}

std::string findingsText(const std::vector<Finding>& findings, const TextStyle& style) {
  std::string text;
  std::map<KindInFile, int> counts;
  for (const Finding& finding : findings) {
    if (++counts[{finding.file, finding.name}] > kShownOfKind) continue;
    text += findingText(finding, style) + "\n";
  }
  for (const auto& [kind, count] : counts) {
    if (count > kShownOfKind) text += restText(kind, count - kShownOfKind);
  }
  return text;
}

std::string countsText(const std::vector<Finding>& findings, const TextStyle& style) {
  if (findings.empty()) return toned("No findings.", Tone::green, style) + "\n";
  std::string text;
  std::size_t columns = 0;
  for (const Severity severity : {Severity::error, Severity::warning, Severity::note}) {
    const auto count =
        std::count_if(findings.begin(), findings.end(),
                      [severity](const Finding& f) { return f.severity == severity; });
    if (count == 0) continue;
    const std::string part = shownCount(count, nameOf(severity));
    text += (text.empty() ? "" : ", ") + toned(part, toneOf(severity), style);
    columns += part.size() + 2;
  }
  constexpr std::string_view kHint = "marrowctl check --explain NAME tells more.\n";
  const bool fits = columns + kHint.size() <= static_cast<std::size_t>(style.width);
  return text.append(fits ? ". " : ".\n").append(kHint);
}

}  // namespace marrowbench::ctl
