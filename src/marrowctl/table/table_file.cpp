#include "marrowctl/table/table_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include "marrowctl/support/utf8.h"
#include "marrowctl/table/row_dates.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

// Before the program: of a copy that lost its time.
constexpr std::int64_t kEarliest = 946684800;  // 2000-01-01
// A file of so many lines that are no rows is no table, however long it is.
constexpr std::uint64_t kPatience = 10000;

constexpr std::int64_t kMostMs = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kMostKib = std::numeric_limits<std::uint32_t>::max();

class OpenFile {
 public:
  explicit OpenFile(const std::string& path)
      : descriptor(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor > STDIN_FILENO) (void)close(descriptor);
  }
  const int descriptor;
};

std::string problemOf(const std::string& path, int code) {
  return path + ": " + std::strerror(code);
}

std::int64_t timeOf(const struct stat& status) {
  const std::int64_t now = currentSeconds();
  return S_ISREG(status.st_mode) && status.st_mtime >= kEarliest ? status.st_mtime : now;
}

bool exists(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

bool isHeaderLine(std::string_view text) { return text.starts_with("Date"); }

// Spreadsheets put it in front of what they save.
void dropByteOrderMark(TextLine& line) {
  if (line.number == 1 && line.text.starts_with(kByteOrderMark))
    line.text.remove_prefix(kByteOrderMark.size());
}

}  // namespace

std::string TableReader::read(const std::string& path) {
  const OpenFile file(path);
  if (file.descriptor < 0) return problemOf(path, errno);
  struct stat status {};
  if (fstat(file.descriptor, &status) != 0) return problemOf(path, errno);
  if (S_ISDIR(status.st_mode)) return problemOf(path, EISDIR);
  return readOpen(file.descriptor, path, timeOf(status));
}

std::string TableReader::readOpen(int fileDescriptor, const std::string& path,
                                  std::int64_t changed) {
  const std::uint64_t first = set.store.size();
  set.files.push_back({path, changed, 0, path != "-" && exists(path + "_lock.txt")});
  lineBefore = 0;
  hasLines = hasOtherRows = hasHeader = false;
  skipped = choice ? choice->skippedBytes(path) : 0;
  std::string problem;
  if (!takeLines(fileDescriptor, problem)) return path + ": " + problem;
  set.files.back().rows = set.store.size() - first;
  set.store.endFile();
  setTimes(set.store, first, changed);
  return {};
}

void TableReader::takeLine(const TextLine& line, RowCells& cells) {
  if (line.begin + line.text.size() <= skipped) {
    hasOtherRows = true;
    return;
  }
  const LineContent content = rows.read(line, cells);
  if (content == LineContent::nothing) {
    hasHeader = hasHeader || isHeaderLine(line.text);
    return;
  }
  hasLines = true;
  const bool isRow = content == LineContent::row;
  if (choice && !choice->takes(set.files.back().path, isRow ? &cells : nullptr)) {
    hasOtherRows = hasOtherRows || isRow;
  } else if (isRow) {
    takeRow(line, cells);
  } else {
    refuse(line, rows.reason());
  }
}

bool TableReader::isTable(std::uint64_t rowsBefore) const {
  return hasHeader || hasOtherRows || set.store.size() > rowsBefore;
}

bool TableReader::takeLines(int fileDescriptor, std::string& problem) {
  LineReader lines(fileDescriptor);
  const std::uint64_t before = set.store.size();
  std::uint64_t told = 0;
  RowCells cells;
  for (TextLine line; lines.next(line);) {
    dropByteOrderMark(line);
    takeLine(line, cells);
    if (progress && lines.bytesRead() != told) {
      progress(lines.bytesRead() - told);
      told = lines.bytesRead();
    }
    if (line.number == kPatience && !isTable(before)) break;
  }
  if (lines.failure() != 0) problem = std::strerror(lines.failure());
  if (hasLines && !isTable(before))
    problem = "this is no results table of marrowbench: no header and no row is in it";
  return problem.empty();
}

bool TableReader::isOfLastKind(const RowCells& cells) {
  numbers.clear();
  if (lastKind == nullptr || cells.parameters != lastParameters) return false;
  return lastSource.matches(cells.source, numbers) && lastDest.matches(cells.dest, numbers) &&
         lastError.matches(cells.error, numbers);
}

const std::uint32_t* TableReader::kindOf(const RowCells& cells, std::string& reason) {
  // Rows of one test stand together.
  if (isOfLastKind(cells)) return lastKind;
  key.assign(cells.parameters);
  numbers.clear();
  RowKind kind;
  std::size_t shapes[3] = {};
  std::size_t counts[3] = {};
  const std::string_view texts[] = {cells.source, cells.dest, cells.error};
  for (std::size_t i = 0; i < 3; ++i) {
    key += '\n';
    shapes[i] = key.size();
    const std::size_t numbersBefore = numbers.size();
    if (!appendShape(texts[i], key, numbers)) {
      reason = "a control character in its paths or its error text";
      return nullptr;
    }
    counts[i] = numbers.size() - numbersBefore;
  }
  if (const std::uint32_t* const known = set.store.findKind(key)) return remember(cells, known);
  const std::optional<Parameters> parameters =
      parametersOf(cells.parameters, cells.separator, reason);
  if (!parameters) return nullptr;
  kind.parameters = *parameters;
  kind.source = key.substr(shapes[0], shapes[1] - shapes[0] - 1);
  kind.dest = key.substr(shapes[1], shapes[2] - shapes[1] - 1);
  kind.error = key.substr(shapes[2]);
  kind.sourceNumbers = counts[0];
  kind.destNumbers = counts[1];
  kind.errorNumbers = counts[2];
  set.store.addKind(key, std::move(kind));
  return remember(cells, set.store.findKind(key));
}

const std::uint32_t* TableReader::remember(const RowCells& cells, const std::uint32_t* index) {
  const RowKind& kind = set.store.kinds[*index];
  lastParameters = cells.parameters;
  lastKind = index;
  lastSource = ShapeMatcher(kind.source);
  lastDest = ShapeMatcher(kind.dest);
  lastError = ShapeMatcher(kind.error);
  return index;
}

void TableReader::takeRow(const TextLine& line, const RowCells& cells) {
  if (cells.milliseconds < 0 || cells.milliseconds > kMostMs) {
    return refuse(line, "Time ms is impossible: " + std::to_string(cells.milliseconds));
  }
  if (cells.kibPerSecond > kMostKib) {
    return refuse(line, "Time KiB/s is impossible: " + std::to_string(cells.kibPerSecond));
  }
  std::string reason;
  const std::uint32_t* const kind = kindOf(cells, reason);
  if (kind == nullptr) return refuse(line, std::move(reason));
  addRow(line, cells, *kind);
}

void TableReader::addRow(const TextLine& line, const RowCells& cells, std::uint32_t kind) {
  StoredRow row;
  row.end = cells.date;
  row.milliseconds = static_cast<std::uint32_t>(cells.milliseconds);
  row.kind = kind;
  const bool hasSpeed = cells.kibPerSecond >= 0;
  if (hasSpeed) row.kibPerSecond = static_cast<std::uint32_t>(cells.kibPerSecond);
  row.percent = static_cast<std::int16_t>(cells.percent);
  const bool isWide = row.percent != cells.percent;
  unsigned flags = 0;
  if (!hasSpeed) flags |= hasNoSpeed;
  if (cells.nullPosition >= 0) flags |= nullLookedFor;
  if (cells.nullPosition > 0) flags |= hasNullData;
  if (isWide) flags |= hasWidePercent;
  row.flags = static_cast<std::uint16_t>(flags);
  set.store.add(row, line.number - lineBefore, numbers);
  if (isWide || cells.nullPosition > 0) set.store.setWide({cells.nullPosition, cells.percent});
  lineBefore = line.number;
}

void TableReader::refuse(const TextLine& line, std::string reason) {
  const auto file = static_cast<std::uint32_t>(set.files.size() - 1);
  set.unusable.push_back({file, line.number, std::move(reason)});
}

}  // namespace marrowbench::ctl
