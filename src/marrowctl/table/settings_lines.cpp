#include "marrowctl/table/settings_lines.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "marrowctl/table/test_names.h"
#include "settings/settings_lines.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kTableField = 12;
constexpr std::int64_t kKib = 1024;

// Position and length.
using Span = std::pair<std::size_t, std::size_t>;

// One of the two numbers of a date. Behind a digit, of a client's name say, its first one is part
// of a longer number.
bool isPartOf(const Span& date, std::size_t number, const std::vector<Span>& numbers) {
  const bool isFirst = numbers[number].first == date.first;
  const bool isSecond = number > 0 && numbers[number - 1].first == date.first;
  return isFirst || isSecond;
}

void setRolesOf(const TemplateMatch& match, const std::vector<Span>& spans, NumberRole* roles) {
  for (std::size_t i = 0; i < spans.size(); ++i) {
    roles[i] = NumberRole::text;
    for (const auto& iteration : match.iterations) {
      if (iteration == spans[i]) roles[i] = NumberRole::iteration;
    }
    for (const auto& date : match.dates) {
      if (isPartOf(date, i, spans)) roles[i] = NumberRole::date;
    }
  }
}

// A relative one lacks folders by which tables differ.
std::string wholePath(const std::string& path) {
  std::error_code code;
  return std::filesystem::absolute(path, code).lexically_normal().string();
}

}  // namespace

Parameters parametersOf(const PlannedTest& test) {
  const ParameterBlock& used = test.used;
  Parameters p;
  p.method = test.method;
  p.type = test.type;
  p.flush = used.flush;
  p.preallocate = used.prealloc;
  p.chunkWaitMs = used.chunkWait;
  p.chunkBytes = used.chunkSize;
  p.systemBuffer = used.systemBuffer;
  p.fileKib = used.fileSize / kKib;
  p.iterations = test.iterations;
  p.cacheMode = used.emptyCacheMode;
  return p;
}

bool writesRows(const PlannedLine& line) {
  return line.kind == LineKind::test && line.test.isRun && line.test.iterations > 0 &&
         !line.fields[kTableField].text.empty();
}

SettingsTests::SettingsTests(const Plan& plan) {
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& planned : file.lines) {
      if (!writesRows(planned)) continue;
      const PlannedTest& test = planned.test;
      Line& line = lines.emplace_back();
      line.source = PathTemplate(file, test, test.source, true);
      line.dest = PathTemplate(file, test, test.dest, true);
      line.table = PathTemplate(file, test, test.table, false);
      line.test.parameters = parametersOf(test);
      line.test.source = line.source.shown();
      line.test.dest = line.dest.shown();
      line.test.settingsFile = file.path;
      line.test.configIndex = test.configIndex;
      line.test.settingsLine = planned.number;
      line.test.expectedRows = test.iterations;
    }
  }
  alike.assign(lines.size(), kNone);
  for (std::uint32_t i = 0; i < lines.size(); ++i) {
    for (std::uint32_t j = i + 1; j < lines.size() && alike[i] == kNone; ++j) {
      const bool isAlike = lines[i].test.parameters == lines[j].test.parameters &&
                           lines[i].source == lines[j].source && lines[i].dest == lines[j].dest;
      if (isAlike) alike[i] = j;
    }
  }
}

std::vector<ResultTest> SettingsTests::tests() const {
  std::vector<ResultTest> tests;
  for (const Line& line : lines) tests.push_back(line.test);
  return tests;
}

SettingsTests::Fit SettingsTests::fit(const Parameters& parameters, const std::string& source,
                                      const std::string& dest) const {
  Fit best;
  std::size_t most = 0;
  for (std::uint32_t i = 0; i < lines.size(); ++i) {
    const Line& line = lines[i];
    if (line.test.parameters != parameters) continue;
    const std::size_t literals = line.source.literals() + line.dest.literals() + 1;
    if (literals <= most) continue;
    const auto inSource = line.source.match(source);
    const auto inDest = line.dest.match(dest);
    if (!inSource || !inDest) continue;
    most = literals;
    best = {i, *inSource, *inDest};
  }
  return best;
}

void SettingsTests::setRoles(const RowStore& store, NumberRoles& roles) const {
  std::vector<bool> seen(store.kinds.size());
  for (StoredRowCursor rows(store); rows.next();) {
    const std::uint32_t index = rows.row().kind;
    if (seen[index]) continue;
    seen[index] = true;
    const RowKind& kind = rows.kind();
    const std::string source = rows.source(), dest = rows.dest();
    const Fit found = fit(kind.parameters, source, dest);
    if (found.line == kNone) continue;
    std::vector<std::pair<std::size_t, std::size_t>> spans;
    const Digits* numbers = rows.numbers().data();
    appendSpans(kind.source, numbers, spans);
    setRolesOf(found.source, spans, roles[index].data());
    spans.clear();
    appendSpans(kind.dest, numbers, spans);
    setRolesOf(found.dest, spans, roles[index].data() + kind.sourceNumbers);
  }
}

// Of lines that look the same, those whose table has a path most like this one. A table that was
// renamed can be of all of them.
LineNumbers SettingsTests::linesIn(const std::string& table, std::uint32_t first) const {
  if (first == kNone) return {};
  if (alike[first] == kNone) return {first};
  LineNumbers found;
  const std::string path = wholePath(table);
  std::size_t most = 0;
  for (std::uint32_t line = first; line != kNone; line = alike[line]) {
    const std::size_t fitting = lines[line].table.fittingTail(path);
    if (fitting < most) continue;
    if (fitting > most) found.clear();
    most = fitting;
    found.push_back(line);
  }
  return found;
}

void SettingsTests::cutToFolders(const std::vector<LineNumbers>& linesOfSites,
                                 std::vector<Site>& sites) const {
  const auto cut = [](const PathTemplate& pathTemplate, std::string& path) {
    if (const auto match = pathTemplate.match(path)) path.resize(match->folder);
  };
  for (std::size_t i = 0; i < sites.size(); ++i) {
    if (linesOfSites[i].empty()) continue;
    const Line& line = lines[linesOfSites[i].front()];
    cut(line.source, sites[i].source);
    cut(line.dest, sites[i].dest);
  }
}

// Its name is enough where a share is mounted elsewhere.
std::string SettingsTests::hostInTable(const Line& line, const std::string& table) {
  if (!line.table.hasHost()) return {};
  const std::string path = wholePath(table);
  for (const auto& match : {line.table.match(path), line.table.matchName(path)}) {
    if (match && !match->host.empty()) return std::string(match->host);
  }
  return {};
}

std::vector<LineNumbers> SettingsTests::matchSites(const ResultSet& set,
                                                   std::vector<Site>& sites) const {
  std::vector<LineNumbers> found;
  for (Site& site : sites) {
    const Fit best = fit(set.store.kinds[site.kind].parameters, site.source, site.dest);
    const std::string& table = set.files[site.file].path;
    found.push_back(linesIn(table, best.line));
    if (found.back().empty()) continue;
    const Line& line = lines[found.back().front()];
    // In place of a source's: a client may read the files of another one.
    site.host = hostInTable(line, table);
    if (site.host.empty()) site.host = best.dest.host.empty() ? best.source.host : best.dest.host;
  }
  return found;
}

}  // namespace marrowbench::ctl
