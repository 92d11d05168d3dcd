#include "marrowctl/plan/settings_reader.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "marrowctl/plan/client_paths.h"
#include "marrowctl/plan/pattern_maker.h"
#include "marrowctl/plan/template_expander.h"
#include "marrowctl/support/utf8.h"
#include "settings/raw_line.h"
#include "settings/settings_fields.h"
#include "settings/settings_lines.h"
#include "support/clock.h"
#include "support/line_string.h"
#include "support/time_stamps.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kBlanks = " \t\r";

// The next word of a text and its position; the word is empty at the end.
std::string_view nextWord(std::string_view text, std::size_t& position) {
  position = std::min(text.find_first_not_of(kBlanks, position), text.size());
  const std::size_t end = std::min(text.find_first_of(kBlanks, position), text.size());
  const std::string_view word = text.substr(position, end - position);
  return word;
}

// "# marrowctl: allow NAME..."; no names when the comment is another one.
AllowComment allowCommentOf(const RawLine& line, int number) {
  AllowComment comment{number, {}, line.text};
  std::size_t position = 1;
  for (const std::string_view expected : {"marrowctl:", "allow"}) {
    if (nextWord(line.text, position) != expected) return comment;
    position += expected.size();
  }
  for (;;) {
    const std::string_view name = nextWord(line.text, position);
    if (name.empty()) return comment;
    comment.names.push_back({std::string(name), static_cast<int>(position) + 1});
    position += name.size();
  }
}

void takeFields(const RawLine& raw, PlannedLine& line) {
  const LineString untrimmed = charactersOf(raw);
  LineString trimmed = untrimmed;
  trim(trimmed);
  const std::size_t indent = untrimmed.view().find(trimmed.view());
  FieldReader fields(trimmed);
  for (PlannedField& field : line.fields) {
    const FieldText taken = fields.next();
    field.text = narrowedText<LineString::capacity()>(taken.text).view();
    field.column = static_cast<int>(indent + taken.position) + 1;
    field.isOmitted = taken.isOmitted;
  }
}

// All but what the paths expand to.
PlannedTest testOf(const TestConfig& record, const ParameterBlock& asWritten) {
  PlannedTest test;
  test.method = record.method;
  test.asWritten = asWritten;
  test.used = record.parameters.parameters;
  test.iterations = record.iterations;
  test.markDone = record.markDone;
  test.source = record.sourceTemplate.view();
  test.dest = record.destTemplate.view();
  test.log = record.logTemplate.view();
  test.table = record.resultsTemplate.view();
  return test;
}

TestType typeOn(const std::string& host, const PlannedFile& file, const PlannedTest& test) {
  const ClientPaths paths(host);
  return testTypeOf(paths.path(file, test, test.patterns.source, 0).c_str(),
                    paths.path(file, test, test.patterns.dest, 0).c_str());
}

bool isNothing(const RawLine& line, const FixedString& path) {
  const auto scratch = std::make_unique<TestConfig>();
  return takeSettingsLine(line, path, 0, *scratch).kind == LineKind::nothing;
}

constexpr std::string_view kHost = "[host]";

// The program replaces "[host]" first, with the name of the machine that it is on.
RawLine lineOn(const std::string& host, RawLine line) {
  for (std::int32_t at = findIgnoreCase(line.text, kHost); at >= 0;
       at = findIgnoreCase(line.text, kHost, static_cast<std::size_t>(at) + host.size())) {
    line.text.replace(static_cast<std::size_t>(at), kHost.size(), host);
    line.length += host.size() - kHost.size();
  }
  return line;
}

// One file on its way from the stream into the plan.
class FileReading {
 public:
  FileReading(const std::string& path, const std::vector<std::string>& clients,
              const std::string& date, std::vector<TestConfig>& records)
      : hosts(clients),
        table(records),
        corePath(folderPathOf(path)),
        patterns(path, settingsFileNumberOf(corePath)) {
    file.path = path;
    file.settingsFileNumber = settingsFileNumberOf(corePath);
    file.date = date;
  }

  void take(const RawLine& raw, int number) {
    if (number == 1) file.hasByteOrderMark = raw.text.starts_with(kByteOrderMark);
    if (takeAllowComment(raw, number)) return;
    if (file.chainLine == 0) return takeLine(raw, number);
    if (file.behindChain.length != 0 || isNothing(raw, corePath)) return;
    file.behindChain.number = number;
    file.behindChain.text = raw.text;
    file.behindChain.length = raw.length;
  }

  PlannedFile finished() { return std::move(file); }
  [[nodiscard]] std::size_t recordsUsed() const { return std::min(tests + 1, table.size()); }

 private:
  bool takeAllowComment(const RawLine& raw, int number) {
    if (!startsWithChar(charactersOf(raw), u'#')) return false;
    AllowComment comment = allowCommentOf(raw, number);
    if (!comment.names.empty()) file.allows.push_back(std::move(comment));
    return true;
  }

  void takeLine(const RawLine& raw, int number) {
    TestConfig& record = nextRecord();
    const std::int32_t numberBefore = record.settingsFileNumber;
    const SettingsLine taken = takeSettingsLine(raw, corePath, file.settingsFileNumber, record);
    if (taken.kind == LineKind::nothing) return;
    PlannedLine& line = file.lines.emplace_back();
    line.number = number;
    line.text = raw.text;
    line.length = raw.length;
    line.kind = taken.kind;
    if (taken.kind == LineKind::chain) {
      takeChain(raw, numberBefore, record);
      file.chainLine = number;
      return;
    }
    takeFields(raw, line);
    if (taken.kind == LineKind::rejected) line.refusedField = taken.parsed.field;
    if (taken.kind == LineKind::test) takeTest(record, taken.asWritten, line.test);
  }

  void takeChain(const RawLine& raw, std::int32_t numberBefore, TestConfig& record) {
    const auto chainOn = [&](const std::string& host) {
      record.settingsFileNumber = numberBefore;
      (void)takeSettingsLine(lineOn(host, raw), corePath, file.settingsFileNumber, record);
      return std::string(record.sourceTemplate.view());
    };
    if (findIgnoreCase(raw.text, kHost) >= 0) {
      for (std::size_t i = 1; i < hosts.size(); ++i)
        file.missingChains.push_back({hosts[i], chainOn(hosts[i])});
    }
    file.chain = chainOn(hosts.front());
  }

  void takeTest(const TestConfig& record, const ParameterBlock& asWritten, PlannedTest& test) {
    test = testOf(record, asWritten);
    test.configIndex = static_cast<int>(tests);
    test.isRun = tests < table.size();
    test.patterns = patterns.patternsOf(test);
    test.type = typeOn(hosts.front(), file, test);
    ++tests;
  }

  // Tests for which the table has no room share a record of the file's own.
  TestConfig& nextRecord() {
    if (tests < table.size()) return table[tests];
    if (!spare) spare = std::make_unique<TestConfig>();
    return *spare;
  }

  const std::vector<std::string>& hosts;
  std::vector<TestConfig>& table;
  const FixedString corePath;
  PatternMaker patterns;
  PlannedFile file;
  std::size_t tests = 0;  // accepted so far
  std::unique_ptr<TestConfig> spare;
};

}  // namespace

SettingsReader::SettingsReader(std::vector<std::string> clients)
    : hosts(std::move(clients)), date(fileStamp(currentSeconds()).view()), table(kMaxTestLines) {}

void SettingsReader::startRun() {
  std::fill_n(table.begin(), touched, TestConfig{});
  touched = 0;
}

PlannedFile SettingsReader::read(const std::string& path, std::istream& input) {
  FileReading reading(path, hosts, date, table);
  RawLine line;
  for (int number = 1; readRawLine(input, line); ++number) reading.take(line, number);
  touched = std::max(touched, reading.recordsUsed());
  return reading.finished();
}

void SettingsReader::passOver(const PlannedFile& file) {
  std::size_t accepted = 0;
  for (const PlannedLine& line : file.lines) {
    if (line.kind == LineKind::rejected || accepted == table.size()) continue;
    table[accepted++].settingsFileNumber = file.settingsFileNumber;
  }
  touched = std::max(touched, accepted);
}

}  // namespace marrowbench::ctl
