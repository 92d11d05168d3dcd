#include "marrowctl/table/row_cells.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kCells = 33;
constexpr std::size_t kLeftCells = 12;
constexpr std::size_t kRightCells = 16;
constexpr std::size_t kDateLength = 16;
constexpr std::size_t kShownOfCell = 40;
constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::array<int, 12> kDays = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Two digits, or a number that no part of a date has.
unsigned twoDigits(const char* at) {
  const auto tens = static_cast<unsigned>(at[0]) - '0';
  const auto ones = static_cast<unsigned>(at[1]) - '0';
  return tens > 9 || ones > 9 ? 99 : tens * 10 + ones;
}

std::string shown(std::string_view cell) {
  const bool isLong = cell.size() > kShownOfCell;
  std::string text = "\"";
  text += printable(cell.substr(0, kShownOfCell));
  text += isLong ? "...\"" : "\"";
  return text;
}

bool isHeader(std::string_view text) {
  return text.starts_with("Date,Method,") || text.starts_with("Date;Method;");
}

}  // namespace

DateParts partsOf(RowDate date) {
  const auto bits = [date](unsigned shift, unsigned mask) {
    return static_cast<int>(date >> shift & mask);
  };
  return {bits(22, 15), bits(17, 31), bits(12, 31), bits(6, 63), bits(0, 63)};
}

RowDate dateFrom(std::string_view text) {
  if (text.size() != kDateLength) return 0;
  const auto* const month = std::find(kMonths.begin(), kMonths.end(), text.substr(0, 3));
  const bool hasForm = month != kMonths.end() && text[3] == ' ' && text[6] == '.' &&
                       text[7] == ' ' && text[10] == ':' && text[13] == '.';
  if (!hasForm) return 0;
  const auto index = static_cast<unsigned>(month - kMonths.begin());
  const unsigned day = twoDigits(&text[4]), hour = twoDigits(&text[8]);
  const unsigned minute = twoDigits(&text[11]), second = twoDigits(&text[14]);
  // A leap second is one.
  const bool isDate = day >= 1 && day <= static_cast<unsigned>(kDays[index]) && hour <= 23 &&
                      minute <= 59 && second <= 60;
  if (!isDate) return 0;
  return (index + 1) << 22U | day << 17U | hour << 12U | minute << 6U | second;
}

LineContent RowReader::read(const TextLine& line, RowCells& cells) {
  std::string_view text = line.text;
  if (text.ends_with('\r')) text.remove_suffix(1);
  if (text.find_first_not_of(" \t") == std::string_view::npos || isHeader(text)) {
    return LineContent::nothing;
  }
  const bool isRow =
      line.isCut ? refuse("longer than a row can be") : split(text, line.isEnded, cells);
  return isRow ? LineContent::row : LineContent::unusable;
}

bool RowReader::split(std::string_view text, bool isEnded, RowCells& cells) {
  cells.date = dateFrom(text.substr(0, kDateLength));
  if (cells.date == 0) {
    if (!isEnded && text.size() < kDateLength) return refuse("torn: the file ends in it");
    return refuse("no date in its first cell: " + shown(text.substr(0, text.find_first_of(",;"))));
  }
  cells.separator = text.size() > kDateLength ? text[kDateLength] : '\0';
  if (cells.separator != ',' && cells.separator != ';') {
    return refuse(isEnded ? "no separator behind its date" : "torn: the file ends in it");
  }
  if (room.size() <= text.size()) room.resize(text.size() + 1);
  std::size_t found = findSeparators(text, cells.separator, room.data());
  // Some programs drop the one behind the last cell.
  if (text.back() != cells.separator) room[found++] = static_cast<std::uint32_t>(text.size());
  separators = {room.data(), found};
  if (!isEnded && found != kCells) return refuse("torn: the file ends in it");
  if (found < kCells) {
    return refuse(std::to_string(found) + " cells instead of " + std::to_string(kCells));
  }
  cells.parameters = text.substr(kDateLength + 1, separators[kLeftCells - 1] - kDateLength - 1);
  return splitMiddle(text, cells) && takeNumbers(text, cells);
}

// Source, address, destination, address, error. Both addresses are empty, so that two separators
// stand side by side there and, unless a path makes it so, nowhere else.
bool RowReader::splitMiddle(std::string_view text, RowCells& cells) {
  const std::size_t begin = separators[kLeftCells - 1] + 1;
  const std::size_t end = separators[separators.size() - kRightCells - 1];
  const auto between = [text](std::size_t from, std::size_t to) {
    return text.substr(from, to - from);
  };
  const std::uint32_t* const middle = separators.data() + kLeftCells;
  const std::size_t count = separators.size() - kCells + 4;
  if (count == 4) {
    cells.source = between(begin, middle[0]);
    cells.dest = between(middle[1] + 1, middle[2]);
    cells.error = between(middle[3] + 1, end);
    return true;
  }
  std::size_t pairs[2] = {};
  std::size_t found = 0;
  for (std::size_t i = 0; i + 1 < count; ++i) {
    if (middle[i + 1] != middle[i] + 1) continue;
    if (found < 2) pairs[found] = middle[i];
    ++found;
  }
  const bool isClear =
      found == 2 && pairs[1] > pairs[0] + 2 && pairs[0] > begin && middle[0] != begin;
  if (!isClear) return refuse("ambiguous: separators in its paths or its error text");
  cells.source = between(begin, pairs[0]);
  cells.dest = between(pairs[0] + 2, pairs[1]);
  cells.error = between(pairs[1] + 2, end);
  return true;
}

// @param cell  number of the cell from the right, from 1
std::string_view RowReader::fromRight(std::string_view text, std::size_t cell) const {
  const std::size_t end = separators[separators.size() - cell];
  const std::size_t begin = separators[separators.size() - cell - 1] + 1;
  return text.substr(begin, end - begin);
}

bool RowReader::takeNumber(std::string_view text, std::size_t cell, std::int64_t& number) {
  const std::string_view content = fromRight(text, cell);
  const char* const end = content.data() + content.size();
  const auto [stop, code] = std::from_chars(content.data(), end, number);
  if (code == std::errc() && stop == end) return true;
  constexpr std::array<std::string_view, 4> kNames = {"Zero test", "Time ms", "Time KiB/s",
                                                      "Copy Speed %"};
  return refuse(std::string(kNames.at(kRightCells - cell)) + " is no number: " + shown(content));
}

bool RowReader::takeNumbers(std::string_view text, RowCells& cells) {
  cells.nullPosition = -1;
  if (!fromRight(text, kRightCells).empty() && !takeNumber(text, kRightCells, cells.nullPosition)) {
    return false;
  }
  return takeNumber(text, kRightCells - 1, cells.milliseconds) &&
         takeNumber(text, kRightCells - 2, cells.kibPerSecond) &&
         takeNumber(text, kRightCells - 3, cells.percent);
}

bool RowReader::refuse(std::string text) {
  why = std::move(text);
  return false;
}

}  // namespace marrowbench::ctl
