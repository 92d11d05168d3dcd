#include "marrowctl/table/assignment.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "marrowctl/table/number_places.h"
#include "marrowctl/table/run_spans.h"
#include "marrowctl/table/test_names.h"

namespace marrowbench::ctl {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// "c2" before "c10".
bool isBefore(const std::string& a, const std::string& b) {
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      const std::size_t iEnd = std::min(a.find_first_not_of("0123456789", i), a.size());
      const std::size_t jEnd = std::min(b.find_first_not_of("0123456789", j), b.size());
      const std::string x = a.substr(i, iEnd - i), y = b.substr(j, jEnd - j);
      const std::size_t width = std::max(x.size(), y.size());
      const std::string padX = std::string(width - x.size(), '0') + x;
      const std::string padY = std::string(width - y.size(), '0') + y;
      if (padX != padY) return padX < padY;
      i = iEnd;
      j = jEnd;
    } else {
      if (a[i] != b[j]) return a[i] < b[j];
      ++i;
      ++j;
    }
  }
  if (i < a.size() || j < b.size()) return i == a.size();
  return a < b;
}

RunSpans spansOf(const ResultSet& set, std::int64_t gapSeconds) {
  RunSpans spans(gapSeconds);
  for (StoredRowCursor rows(set.store, Unpacking::nothing); rows.next();) {
    const StoredRow& row = rows.row();
    spans.add(std::int64_t{row.end} - row.milliseconds / 1000, row.end);
  }
  return spans;
}

// Of rows whose paths do not tell it: their order.
void countIteration(StoredRow& row, const Parameters& parameters, std::int32_t& next) {
  if (row.iteration >= 0) return;
  row.iteration = next++;
  if (next >= parameters.iterations) next = 0;
}

}  // namespace

std::uint32_t SeriesMaker::seriesOf(std::uint32_t host, std::uint32_t test) {
  const std::uint64_t key = std::uint64_t{host} << 32U | test;
  const auto [found, isNew] = known.try_emplace(key, static_cast<std::uint32_t>(made.size()));
  if (isNew) made.push_back({host, test});
  return found->second;
}

std::vector<std::uint32_t> takeHosts(ResultSet& set, const std::vector<Site>& sites) {
  for (const Site& site : sites) set.hosts.push_back(site.host.empty() ? kUnknownHost : site.host);
  std::sort(set.hosts.begin(), set.hosts.end(), isBefore);
  set.hosts.erase(std::unique(set.hosts.begin(), set.hosts.end()), set.hosts.end());
  std::unordered_map<std::string, std::uint32_t> indices;
  for (std::uint32_t i = 0; i < set.hosts.size(); ++i) indices[set.hosts[i]] = i;
  std::vector<std::uint32_t> ofSite;
  ofSite.reserve(sites.size());
  for (const Site& site : sites) {
    ofSite.push_back(indices[site.host.empty() ? kUnknownHost : site.host]);
  }
  return ofSite;
}

std::vector<std::uint32_t> takeTests(ResultSet& set, const std::vector<Site>& sites, double from) {
  std::unordered_map<std::string, std::uint32_t> known;
  std::vector<std::uint32_t> ofSite;
  for (const Site& site : sites) {
    if (site.rows == 0 || site.lastEnd < from) {
      ofSite.push_back(kNone);
      continue;
    }
    const Parameters& parameters = set.store.kinds[site.kind].parameters;
    const auto [test, isNew] = known.try_emplace(keyOf(parameters) + site.source + '\n' + site.dest,
                                                 static_cast<std::uint32_t>(set.tests.size()));
    if (isNew) {
      ResultTest& added = set.tests.emplace_back();
      added.parameters = parameters;
      added.source = site.source;
      added.dest = site.dest;
    }
    ofSite.push_back(test->second);
  }
  return ofSite;
}

void assignByPaths(ResultSet& set, const std::vector<Site>& sites, const ReadOptions& options) {
  const RunSpans spans = spansOf(set, options.gapSeconds);
  set.runs.found = static_cast<std::int64_t>(spans.count());
  set.runs.judged = options.allRuns ? set.runs.found : 1;
  const std::int64_t from = options.allRuns ? 0 : spans.newestBegin();

  const std::vector<std::uint32_t> hosts = takeHosts(set, sites);
  const std::vector<std::uint32_t> tests = takeTests(set, sites, static_cast<double>(from));
  nameTests(set.tests);
  SeriesMaker maker(set.series);
  std::vector<std::uint32_t> seriesOfSite;
  for (std::size_t i = 0; i < sites.size(); ++i)
    seriesOfSite.push_back(tests[i] == kNone ? kNone : maker.seriesOf(hosts[i], tests[i]));

  std::vector<std::int32_t> next(set.series.size());
  for (StoredRowCursor rows(set.store, Unpacking::nothing); rows.next();) {
    StoredRow& row = set.store.at(rows.index());
    row.series = seriesOfSite[row.series];
    if (row.end < from) continue;
    row.flags |= isJudged;
    countIteration(row, rows.kind().parameters, next[row.series]);
    ++set.judgedRows;
  }
}

}  // namespace marrowbench::ctl
