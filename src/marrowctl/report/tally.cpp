#include "marrowctl/report/tally.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "marrowctl/report/speeds.h"
#include "marrowctl/report/statistics.h"

namespace marrowbench::ctl {
namespace {

constexpr double kBytesOfMib = 1048576;
// Dates are known to a second.
constexpr double kLeastSeconds = 3;
constexpr double kLeastShareOfRows = 0.9;

// What is summed up of the rows of a client in a test.
struct SeriesSum {
  ClientReport client;
  MovedRows moved;
  double bytes = 0;
  double bytesInWindow = 0;
};

bool hasMoved(const SeriesSum& sum) { return sum.moved.first + sum.moved.later > 0; }

Rate rateOf(double bytes, double seconds) {
  return {seconds, bytes, bytes / kBytesOfMib / seconds};
}

class Tally {
 public:
  explicit Tally(Report& judged) : report(judged), set(judged.results), sums(set.series.size()) {}

  void run() {
    report.tests.assign(set.tests.size(), {});
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i].client.host = set.series[i].host;
    countRows();
    setWindows();
    fillWindows();
    setRates();
  }

  [[nodiscard]] std::vector<MovedRows> movedRows() const {
    std::vector<MovedRows> counts;
    for (const SeriesSum& sum : sums) counts.push_back(sum.moved);
    return counts;
  }

 private:
  void countRows() {
    for (RowCursor rows(set, Unpacking::nothing); rows.next();) {
      const ResultRow& row = rows.row();
      TestReport& test = report.tests[row.test];
      SeriesSum& sum = sums[row.series];
      ++test.rows;
      ++sum.client.rows;
      test.errors += row.hasError ? 1 : 0;
      sum.client.errors += row.hasError ? 1 : 0;
      // The cell of a failed row says nothing.
      test.nullData += !row.hasError && row.nullPosition > 0 ? 1 : 0;
      if (row.moved) countMoved(row, sum);
    }
  }

  static void countMoved(const ResultRow& row, SeriesSum& sum) {
    ClientReport& client = sum.client;
    client.firstStart =
        hasMoved(sum) ? std::min(client.firstStart, row.exactStart) : row.exactStart;
    client.lastEnd = std::max(client.lastEnd, row.end);
    sum.bytes += static_cast<double>(row.bytes);
    ++(row.iteration > 0 ? sum.moved.later : sum.moved.first);
  }

  [[nodiscard]] bool isLeftOut(const SeriesSum& sum, std::uint32_t test) const {
    if (!hasMoved(sum)) return true;
    const auto expected = static_cast<double>(set.expectedRows(test));
    return expected > 0 && static_cast<double>(sum.client.rows) < kLeastShareOfRows * expected;
  }

  void setWindows() {
    for (std::size_t i = 0; i < sums.size(); ++i) {
      SeriesSum& sum = sums[i];
      if (sum.client.rows == 0) continue;
      TestReport& test = report.tests[set.series[i].test];
      sum.client.isLeftOut = isLeftOut(sum, set.series[i].test);
      if (hasMoved(sum)) widen(test, sum.client);
    }
  }

  static void widen(TestReport& test, const ClientReport& client) {
    const bool isFirst = test.lastEnd == 0;
    test.firstStart = isFirst ? client.firstStart : std::min(test.firstStart, client.firstStart);
    test.lastEnd = std::max(test.lastEnd, client.lastEnd);
    if (client.isLeftOut) return;
    const bool isFirstInWindow = test.windowEnd == 0;
    const auto end = static_cast<double>(client.lastEnd);
    test.windowStart =
        isFirstInWindow ? client.firstStart : std::max(test.windowStart, client.firstStart);
    test.windowEnd = isFirstInWindow ? end : std::min(test.windowEnd, end);
  }

  void fillWindows() {
    for (RowCursor rows(set, Unpacking::nothing); rows.next();) {
      const ResultRow& row = rows.row();
      if (!row.moved || sums[row.series].client.isLeftOut) continue;
      const TestReport& test = report.tests[row.test];
      const auto end = static_cast<double>(row.end);
      const double inside =
          std::min(end, test.windowEnd) - std::max(row.exactStart, test.windowStart);
      if (inside <= 0) continue;
      sums[row.series].bytesInWindow +=
          static_cast<double>(row.bytes) * inside / (end - row.exactStart);
    }
  }

  void setRates() {
    std::vector<double> bytes(report.tests.size()), bytesInWindow(report.tests.size());
    for (std::size_t i = 0; i < sums.size(); ++i) {
      const std::uint32_t test = set.series[i].test;
      if (sums[i].client.rows == 0) continue;
      bytes[test] += sums[i].bytes;
      bytesInWindow[test] += sums[i].bytesInWindow;
      report.tests[test].clients.push_back(sums[i].client);
    }
    for (std::size_t i = 0; i < report.tests.size(); ++i) {
      std::vector<ClientReport>& clients = report.tests[i].clients;
      std::sort(clients.begin(), clients.end(),
                [](const ClientReport& a, const ClientReport& b) { return a.host < b.host; });
      // Between runs nobody was active.
      if (set.runs.judged == 1) setRatesOf(report.tests[i], bytes[i], bytesInWindow[i]);
    }
  }

  static void setRatesOf(TestReport& test, double bytes, double bytesInWindow) {
    if (test.lastEnd == 0) return;
    const double whole = static_cast<double>(test.lastEnd) - test.firstStart;
    const double window = std::max(0.0, test.windowEnd - test.windowStart);
    test.isTooShort = whole < kLeastSeconds;
    test.toTheLast = rateOf(bytes, whole);
    if (test.windowEnd == 0) return;
    test.overlap = window / whole;
    if (window > 0) test.allActive = rateOf(bytesInWindow, window);
  }

  Report& report;
  const ResultSet& set;
  std::vector<SeriesSum> sums;
};

std::optional<Spread> spreadIn(std::span<double> figures) {
  if (figures.empty()) return std::nullopt;
  return spreadOf(figures);
}

ClientReport* clientOf(TestReport& test, std::uint32_t host) {
  const auto found = std::lower_bound(
      test.clients.begin(), test.clients.end(), host,
      [](const ClientReport& client, std::uint32_t wanted) { return client.host < wanted; });
  return found == test.clients.end() || found->host != host ? nullptr : &*found;
}

void setStragglers(TestReport& test) {
  std::vector<double> medians;
  std::vector<const ClientReport*> clients;
  for (const ClientReport& client : test.clients) {
    if (!client.mibPerSecond) continue;
    medians.push_back(client.mibPerSecond->median);
    clients.push_back(&client);
  }
  if (medians.empty()) return;
  std::vector<double> reordered = medians;
  const double middle = median(reordered);
  for (const std::size_t i : outliersOf(medians)) {
    test.stragglers.push_back({clients[i]->host, medians[i], medians[i] / middle});
  }
  std::sort(test.stragglers.begin(), test.stragglers.end(),
            [](const Straggler& a, const Straggler& b) { return a.ratio < b.ratio; });
}

double medianOf(std::vector<float>& speeds) {
  if (speeds.empty()) return 0;
  const auto middle = speeds.begin() + static_cast<std::ptrdiff_t>(speeds.size() / 2);
  std::nth_element(speeds.begin(), middle, speeds.end());
  const double upper = *middle;
  if (speeds.size() % 2 == 1) return upper;
  return (upper + static_cast<double>(*std::max_element(speeds.begin(), middle))) / 2;
}

void appendAsFloats(std::span<const double> from, std::vector<float>& speeds) {
  std::transform(from.begin(), from.end(), std::back_inserter(speeds),
                 [](double speed) { return static_cast<float>(speed); });
}

// Fills in the distributions of tests, one by one.
class Measuring {
 public:
  Measuring(Report& judged, const std::vector<MovedRows>& movedRows)
      : report(judged), set(judged.results), counts(movedRows), ofTest(set.tests.size()) {
    for (std::uint32_t i = 0; i < set.series.size(); ++i) ofTest[set.series[i].test].push_back(i);
  }

  // Each step disorders the speeds a little more: iterations, then clients, then the test.
  FirstIteration measure(std::size_t index, GroupedFigures& figures) {
    TestReport& test = report.tests[index];
    const FirstIteration first = firstIterationOf(index, figures);
    for (const std::uint32_t series : ofTest[index]) {
      ClientReport* const client = clientOf(test, set.series[series].host);
      if (client != nullptr) client->mibPerSecond = spreadIn(figures.speedsOfSeries(series));
    }
    test.mibPerSecond = spreadIn(figures.speedsOf(index));
    test.milliseconds = spreadIn(figures.timesOf(index));
    setStragglers(test);
    return first;
  }

 private:
  // Speeds are copied in half the memory: the figures lose their order.
  FirstIteration firstIterationOf(std::size_t test, GroupedFigures& figures) const {
    std::vector<float> first, later;
    for (const std::uint32_t series : ofTest[test]) {
      const std::span<double> all = figures.speedsOfSeries(series);
      appendAsFloats(all.first(counts[series].first), first);
      appendAsFloats(all.subspan(counts[series].first), later);
    }
    return {medianOf(first), medianOf(later)};
  }

  Report& report;
  const ResultSet& set;
  const std::vector<MovedRows>& counts;
  std::vector<std::vector<std::uint32_t>> ofTest;  // its series
};

}  // namespace

std::vector<MovedRows> tallyTests(Report& report) {
  Tally tally(report);
  tally.run();
  return tally.movedRows();
}

std::vector<FirstIteration> measureTests(Report& report, const std::vector<MovedRows>& counts) {
  Measuring tests(report, counts);
  std::vector<FirstIteration> firsts;
  for (const TestRange range : rangesOfTests(report.results, counts)) {
    GroupedFigures figures(report.results, counts, range);
    for (std::size_t i = range.begin; i < range.end; ++i)
      firsts.push_back(tests.measure(i, figures));
  }
  return firsts;
}

}  // namespace marrowbench::ctl
