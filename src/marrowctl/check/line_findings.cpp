#include <fmt/format.h>

#include <array>
#include <string>
#include <string_view>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/support/suggestion.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"
#include "settings/settings_fields.h"
#include "support/fixed_string.h"

namespace marrowbench::ctl {
namespace {

constexpr std::array<std::string_view, 4> kMethods = {"Stream", "AnsiC", "Posix", "System"};
constexpr std::size_t kFirstNumber = indexOf(Field::chunkWait);
constexpr std::size_t kLastNumber = indexOf(Field::cacheMode);
// Lengths of lines are counted in 16 bits.
constexpr std::uint64_t kLengthWraps = 65536;

bool isIndentedComment(const PlannedLine& line) {
  return !line.text.starts_with('#') && trimmedText(line.text).starts_with('#');
}

std::string shownCharacter(std::string_view text) {
  const std::size_t length = characterLength(text);
  if (text.starts_with(' ')) return "a blank";
  if (text.starts_with('\t')) return "a tab";
  if (length == 0 || printable(text.substr(0, length)) != text.substr(0, length)) {
    return fmt::format("the byte 0x{:02X}", static_cast<unsigned char>(text.front()));
  }
  return fmt::format("\"{}\"", text.substr(0, length));
}

// Digits, behind one "-" at most: what is refused, or npos.
std::size_t refusedPosition(std::string_view text) {
  return text.find_first_not_of("0123456789", text.starts_with('-') ? 1 : 0);
}

void addUnknownMethod(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  const PlannedField& method = line.fields[indexOf(Field::method)];
  const std::string hint = didYouMean(method.text, kMethods);
  findings.onField(
      "unknown-method", file, line, Field::method,
      {fmt::format("the line is refused: {} is no method{}", quoted(method.text), hint),
       "begin the line with Stream, AnsiC, Posix or System; a comment has its \"#\" in the "
       "first column"});
}

void addBadNumber(const PlannedFile& file, const PlannedLine& line, std::size_t index,
                  FindingList& findings) {
  const PlannedField& field = line.fields[index];
  const std::size_t position = refusedPosition(field.text);
  if (position == std::string::npos) return;
  const std::string what =
      field.isOmitted ? "nothing stands between two separators, which reads as \";\", and that"
                      : shownCharacter(std::string_view(field.text).substr(position));
  Finding& finding = findings.onField(
      "bad-number", file, line, static_cast<Field>(index),
      {fmt::format("the line is refused: {} is no part of a number", what),
       "write digits, with a \"-\" in front at most: sizes in KiB, without a unit; 0 for nothing"});
  if (!field.isOmitted) finding.column = field.column + static_cast<int>(position);
}

void addRefusal(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  if (isIndentedComment(line)) return;
  if (line.refusedField == indexOf(Field::method)) return addUnknownMethod(file, line, findings);
  for (std::size_t i = kFirstNumber; i <= kLastNumber; ++i) addBadNumber(file, line, i, findings);
}

void addEmptyFields(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  for (std::size_t i = 0; i < line.fields.size(); ++i) {
    if (!line.fields[i].isOmitted) continue;
    const bool isData = i == indexOf(Field::source) || i == indexOf(Field::dest);
    const bool isPath = isData || i == indexOf(Field::log) || i == indexOf(Field::table);
    const bool isNumber = i >= kFirstNumber && i <= kLastNumber;
    std::string_view instead = isNumber ? "0" : "0 or false";
    if (isPath) instead = "a path, or a blank between the separators";
    if (isData) instead = "a path, MEMORY for memory, or a blank between the separators";
    if (i == indexOf(Field::method)) instead = "the method";
    findings.onField("empty-field", file, line, static_cast<Field>(i),
                     {fmt::format("{} is empty between two separators and reads as \";\"",
                                  kSettingsFields[i].name),
                      fmt::format("write {}", instead)});
  }
}

void addTooLong(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  if (line.length <= LineString::capacity()) return;
  const std::uint64_t kept =
      std::min<std::uint64_t>(line.length % kLengthWraps, LineString::capacity());
  findings.onLine("line-too-long", file, line, static_cast<int>(kept) + 1,
                  {fmt::format("the line has {} characters, of which {} are read: the rest is cut",
                               shownCount(static_cast<std::int64_t>(line.length)), kept),
                   "shorten the paths: keep data, log and table near the settings file"});
}

void addIndentedComment(const PlannedFile& file, const PlannedLine& line, FindingList& findings) {
  if (!isIndentedComment(line)) return;
  const std::string_view end = line.kind == LineKind::chain
                                   ? "as the line ends in .bst, it names the next settings file"
                                   : "the line is refused with an error text";
  findings.onLine("comment-indented", file, line,
                  {fmt::format("a \"#\" behind blanks begins no comment: {}", end),
                   "put the \"#\" into the first column"});
}

void addByteOrderMark(const PlannedFile& file, FindingList& findings) {
  PlannedLine first;
  if (!file.lines.empty() && file.lines.front().number == 1) first = file.lines.front();
  const std::string_view effect =
      first.kind == LineKind::chain
          ? "its first line waits for a file whose name begins with the mark"
          : "its first line, were it a comment, is refused";
  findings.onLine("byte-order-mark", file, first, 1,
                  {fmt::format("the file begins with the byte order mark of UTF-8: {}", effect),
                   "save the file as UTF-8 without a byte order mark"});
}

void addTooMany(const PlannedFile& file, FindingList& findings) {
  const PlannedLine* first = nullptr;
  std::int64_t count = 0;
  for (const PlannedLine& line : file.lines) {
    if (line.kind != LineKind::test || line.test.isRun) continue;
    if (first == nullptr) first = &line;
    ++count;
  }
  if (first == nullptr) return;
  const std::string rest =
      count == 1 ? "" : fmt::format(", nor {} behind it", shownCount(count - 1, "line"));
  findings.onLine("too-many-tests", file, *first,
                  {fmt::format("a settings file has room for {} tests: this line is not run{}",
                               kMaxTestLines, rest),
                   "move them into a second file and end this one with its name: "
                   "[cfgPath]more.bst"});
}

}  // namespace

void addLineFindings(const Survey& survey, FindingList& findings) {
  for (const PlannedFile& file : survey.plan.files) {
    if (file.hasByteOrderMark) addByteOrderMark(file, findings);
    addTooMany(file, findings);
    for (const PlannedLine& line : file.lines) {
      addTooLong(file, line, findings);
      addIndentedComment(file, line, findings);
      if (line.kind == LineKind::rejected) addRefusal(file, line, findings);
      if (line.kind != LineKind::chain) addEmptyFields(file, line, findings);
    }
  }
}

}  // namespace marrowbench::ctl
