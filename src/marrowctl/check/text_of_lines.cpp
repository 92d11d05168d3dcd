#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "marrowctl/check/changes.h"
#include "marrowctl/check/text_parts.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr int kMargin = 2;
constexpr std::size_t kColumns = 7;
constexpr std::string_view kGap = "  ";

// The columns in front of the changes.
using Row = std::array<std::string, kColumns>;

std::string shownValue(const Change& change, std::int64_t value) {
  if (change.isFlag) return value != 0 ? "on" : "off";
  return change.isSize ? shownSize(value) : std::to_string(value);
}

std::string shownChanges(const PlannedTest& test) {
  std::string text;
  for (const Change& change : changesOf(test)) {
    text += fmt::format("{}{} {} -> {} ({})", text.empty() ? "" : ", ", change.field,
                        shownValue(change, change.from), shownValue(change, change.to), change.why);
  }
  return text;
}

std::string shownFileSize(const PlannedTest& test) {
  return test.type == TestType::write ? shownSize(test.used.fileSize) : "as source";
}

Row rowOf(const PlannedLine& line, std::int64_t moved) {
  const PlannedTest& test = line.test;
  return {std::to_string(line.number),
          std::string(nameOf(test.method)),
          std::string(nameOf(test.type)),
          test.used.chunkSize > 0 ? shownSize(test.used.chunkSize) : "whole file",
          shownFileSize(test),
          std::to_string(test.iterations),
          moved == kUnknownSize ? "not known" : shownSize(moved)};
}

std::array<std::size_t, kColumns> widthsOf(const std::vector<Row>& rows) {
  std::array<std::size_t, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  return widths;
}

// Numbers to the right, words to the left.
std::string aligned(const Row& row, const std::array<std::size_t, kColumns>& widths) {
  std::string text;
  for (std::size_t i = 0; i < kColumns; ++i) {
    const bool isWord = i == 1 || i == 2;
    text += kGap;
    text += isWord ? fmt::format("{:<{}}", row[i], widths[i])
                   : fmt::format("{:>{}}", row[i], widths[i]);
  }
  return text;
}

// The changes stand behind the row, or below it where they don't fit.
std::string withChanges(const std::string& row, const std::string& changes,
                        const TextStyle& style) {
  if (changes.empty()) return row + "\n";
  const bool fits =
      row.size() + kGap.size() + changes.size() <= static_cast<std::size_t>(style.width);
  if (fits) return row + std::string(kGap) + toned(changes, Tone::yellow, style) + "\n";
  return row + "\n" + wrapped(changes, 4 * kMargin, style.width);
}

std::string nextText(const Plan& plan, const PlannedFile& file) {
  if (file.chain.empty()) return {};
  const auto next = std::find_if(plan.files.begin(), plan.files.end(),
                                 [&file](const PlannedFile& f) { return f.path == file.chain; });
  const bool isMissing = next != plan.files.end() && !next->exists;
  return fmt::format("  then {}{}\n", printable(file.chain),
                     isMissing ? ", which does not exist yet" : "");
}

}  // namespace

std::string linesText(const Plan& plan, const PlannedFile& file,
                      std::span<const std::int64_t> moved, const TextStyle& style) {
  std::string text = toned(printable(file.path), Tone::strong, style) + "\n";
  if (!file.exists) return text + "  does not exist: the clients wait for it\n";
  std::vector<Row> rows = {{"line", "method", "kind", "chunk", "size", "iterations", "moves"}};
  std::vector<std::string> changes = {""};
  for (const PlannedLine& line : file.lines) {
    if (line.kind != LineKind::test || !line.test.isRun) continue;
    rows.push_back(rowOf(line, moved[static_cast<std::size_t>(line.test.configIndex)]));
    changes.push_back(shownChanges(line.test));
  }
  if (rows.size() == 1) text += "  no test\n";
  const auto widths = widthsOf(rows);
  for (std::size_t i = 0; rows.size() > 1 && i < rows.size(); ++i) {
    const std::string row = aligned(rows[i], widths);
    text += i == 0 ? toned(row, Tone::faint, style) + "\n" : withChanges(row, changes[i], style);
  }
  return text + nextText(plan, file);
}

}  // namespace marrowbench::ctl
