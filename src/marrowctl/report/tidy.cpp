#include <charconv>
#include <string>

#include "marrowctl/report/output.h"
#include "marrowctl/support/utf8.h"
#include "marrowctl/table/assignment.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kPiece = 1 << 18;
constexpr std::int64_t kKib = 1024;
constexpr std::string_view kHeader =
    "start,end,host,settings,line,iteration,method,type,flush,preallocate,chunk_wait_ms,chunk_"
    "bytes,"
    "system_buffer,file_bytes,source,dest,bytes,milliseconds,mib_per_second,copy_speed_percent,"
    "null_position,error,table,table_line\r\n";

// Rows of one second stand together: their time is turned into text once.
class TimeText {
 public:
  const std::string& of(std::int64_t seconds) {
    if (seconds != known || text.empty()) text = isoTime(seconds);
    known = seconds;
    return text;
  }

 private:
  std::int64_t known = 0;
  std::string text;
};

class TidyRows {
 public:
  explicit TidyRows(const Report& wholeReport) : set(wholeReport.results) {
    for (const ResultTest& test : set.tests) {
      const Parameters& p = test.parameters;
      const bool hasSize = p.type == TestType::write || p.fileKib != 0;
      const auto flag = [](bool value) { return value ? "true," : "false,"; };
      std::string front = quoted(test.settingsFile) + ",";
      front += (test.settingsLine > 0 ? std::to_string(test.settingsLine) : "") + ",";
      fronts.push_back(front);
      std::string cells = std::string(nameOf(p.method)) + "," + std::string(nameOf(p.type)) + ",";
      cells += flag(p.flush);
      cells += flag(p.preallocate);
      cells += std::to_string(p.chunkWaitMs) + "," + std::to_string(p.chunkBytes) + "," +
               std::to_string(p.systemBuffer) + "," +
               (hasSize ? std::to_string(p.fileKib * kKib) : "") + ",";
      parameters.push_back(cells);
    }
    for (const std::string& host : set.hosts)
      hosts.push_back(host == kUnknownHost ? "" : quoted(host));
    for (const ResultFile& file : set.files) tables.push_back(quoted(file.path));
  }

  void append(const RowCursor& rows, std::string& text) {
    const ResultRow& row = rows.row();
    text.append(starts.of(row.start)) += ',';
    text.append(ends.of(row.end)) += ',';
    text.append(hosts[row.host]) += ',';
    text += fronts[row.test];
    appendNumber(row.iteration, text);
    text += parameters[row.test];
    appendQuoted(rows.source(), text);
    text += ',';
    appendQuoted(rows.dest(), text);
    text += ',';
    if (row.moved) {
      appendNumber(row.bytes, text);
    } else {
      text += ',';
    }
    appendNumber(row.milliseconds, text);
    if (row.moved) appendSpeed(mibPerSecond(row), text);
    text += ',';
    appendNumber(row.speedPercent, text);
    if (row.nullPosition >= 0) {
      appendNumber(row.nullPosition, text);
    } else {
      text += ',';
    }
    if (row.hasError) appendQuoted(rows.error(), text);
    text += ',';
    text.append(tables[row.file]) += ',';
    appendNumber(static_cast<std::int64_t>(row.line), text);
    text.back() = '\r';
    text += '\n';
  }

 private:
  static std::string quoted(std::string_view cell) {
    std::string text;
    appendQuoted(cell, text);
    return text;
  }

  // In one pass where it can be: there are three such cells in each row.
  static void appendQuoted(std::string_view cell, std::string& text) {
    bool isPlain = true, isAscii = true;
    for (const char c : cell) {
      isPlain = isPlain && c != ',' && c != '"' && c != '\r' && c != '\n';
      isAscii = isAscii && static_cast<unsigned char>(c) < 0x80;
    }
    if (!isAscii) {
      const std::string repaired = repairedUtf8(cell);
      if (repaired != cell) return appendQuoted(repaired, text);
    }
    if (isPlain) {
      text += cell;
      return;
    }
    text += '"';
    for (const char c : cell) {
      if (c == '"') text += '"';
      text += c;
    }
    text += '"';
  }

  static void appendNumber(std::int64_t number, std::string& text) {
    char digits[24];
    const auto [end, code] = std::to_chars(digits, digits + sizeof digits, number);
    text.append(digits, end) += ',';
  }

  static void appendSpeed(double speed, std::string& text) {
    char digits[64];
    const auto [end, code] =
        std::to_chars(digits, digits + sizeof digits, speed, std::chars_format::fixed, 6);
    text.append(digits, end);
  }

  const ResultSet& set;
  TimeText starts, ends;
  // Texts of each test, host and table.
  std::vector<std::string> fronts, parameters, hosts, tables;
};

}  // namespace

bool writeTidy(const Report& report, const std::function<bool(std::string_view)>& write) {
  TidyRows tidy(report);
  std::string text(kHeader);
  for (RowCursor rows(report.results); rows.next();) {
    tidy.append(rows, text);
    if (text.size() < kPiece) continue;
    if (!write(text)) return false;
    text.clear();
  }
  return write(text);
}

}  // namespace marrowbench::ctl
