#include "marrowctl/report/compare.h"

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

#include "marrowctl/report/bootstrap.h"
#include "marrowctl/report/statistics.h"
#include "marrowctl/table/number_places.h"
#include "marrowctl/table/test_names.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kLeastRows = 5;
constexpr double kSameFrom = 0.98, kSameTo = 1.02;
constexpr double kPercent = 100;

using Key = std::function<std::string(const ResultTest&)>;

std::string lineKey(const ResultTest& test) {
  if (test.settingsFile.empty()) return {};
  return test.settingsFile + '\n' + std::to_string(test.configIndex);
}

std::string nameKey(const ResultTest& test) { return test.name; }

std::string fileKey(const ResultTest& test) {
  const auto name = [](const std::string& path) { return path.substr(path.rfind('/') + 1); };
  return keyOf(test.parameters) + name(test.source) + '\n' + name(test.dest);
}

// The tests of a set by a key that no other test has.
std::unordered_map<std::string, std::uint32_t> byKey(const ResultSet& set, const Key& key,
                                                     const std::vector<bool>& isTaken) {
  std::unordered_map<std::string, std::uint32_t> tests;
  for (std::uint32_t i = 0; i < set.tests.size(); ++i) {
    const std::string text = key(set.tests[i]);
    if (isTaken[i] || text.empty()) continue;
    const auto [known, isNew] = tests.try_emplace(text, i);
    if (!isNew) known->second = kNone;
  }
  return tests;
}

std::vector<std::pair<std::uint32_t, std::uint32_t>> pairsOf(const ResultSet& before,
                                                             const ResultSet& after,
                                                             std::vector<bool>& oldTaken,
                                                             std::vector<bool>& newTaken) {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
  for (const Key& key : {Key(lineKey), Key(nameKey), Key(fileKey)}) {
    const auto oldTests = byKey(before, key, oldTaken);
    for (const auto& [text, newTest] : byKey(after, key, newTaken)) {
      const auto found = oldTests.find(text);
      if (newTest == kNone || found == oldTests.end() || found->second == kNone) continue;
      oldTaken[found->second] = newTaken[newTest] = true;
      pairs.emplace_back(found->second, newTest);
    }
  }
  std::sort(pairs.begin(), pairs.end());
  return pairs;
}

// The speeds of each test.
std::vector<std::vector<ClientSpeed>> speedsOf(const ResultSet& set) {
  std::vector<std::vector<ClientSpeed>> speeds(set.tests.size());
  for (RowCursor rows(set, Unpacking::nothing); rows.next();) {
    const ResultRow& row = rows.row();
    if (row.moved) speeds[row.test].push_back({mibPerSecond(row), row.host});
  }
  return speeds;
}

// Hosts as numbers from 0 without gaps.
std::int64_t numberClients(std::vector<ClientSpeed>& rows) {
  std::unordered_map<std::uint32_t, std::uint32_t> numbers;
  for (ClientSpeed& row : rows) {
    row.client =
        numbers.try_emplace(row.client, static_cast<std::uint32_t>(numbers.size())).first->second;
  }
  return static_cast<std::int64_t>(numbers.size());
}

ComparedSide sideOf(std::vector<ClientSpeed>& rows) {
  ComparedSide side;
  side.rows = static_cast<std::int64_t>(rows.size());
  side.clients = numberClients(rows);
  std::vector<double> speeds;
  speeds.reserve(rows.size());
  for (const ClientSpeed& row : rows) speeds.push_back(row.speed);
  if (!speeds.empty()) side.medianMibPerSecond = median(speeds);
  return side;
}

Difference differenceOf(const Interval& interval) {
  if (interval.low >= kSameFrom && interval.high <= kSameTo) return Difference::same;
  if (interval.low > 1) return Difference::faster;
  if (interval.high < 1) return Difference::slower;
  return Difference::cannotTell;
}

bool isPositive(const ClientSpeed& row) { return row.speed > 0; }

ComparedTest comparedTest(const std::string& name, std::vector<ClientSpeed> before,
                          std::vector<ClientSpeed> after) {
  ComparedTest test;
  test.name = name;
  test.before = sideOf(before);
  test.after = sideOf(after);
  if (test.before.medianMibPerSecond.value_or(0) <= 0 || !test.after.medianMibPerSecond)
    return test;
  test.ratio = *test.after.medianMibPerSecond / *test.before.medianMibPerSecond;
  const bool canTell = std::min(before.size(), after.size()) >= kLeastRows &&
                       std::all_of(before.begin(), before.end(), isPositive);
  if (!canTell) return test;
  const Interval interval = ratioInterval(std::move(before), std::move(after));
  test.low = interval.low;
  test.high = interval.high;
  test.difference = differenceOf(interval);
  return test;
}

void addOthers(const ResultSet& set, const std::vector<bool>& isTaken,
               std::vector<std::string>& names) {
  for (std::size_t i = 0; i < set.tests.size(); ++i) {
    if (!isTaken[i]) names.push_back(set.tests[i].name);
  }
}

// Of a test with a ratio.
bool isBelow(const ComparedTest& test, double percent) {
  return (1 - *test.ratio) * kPercent > percent;
}

}  // namespace

Comparison compare(const ResultSet& before, const ResultSet& after) {
  std::vector<bool> oldTaken(before.tests.size()), newTaken(after.tests.size());
  auto oldSpeeds = speedsOf(before);
  auto newSpeeds = speedsOf(after);
  Comparison comparison;
  for (const auto& [oldTest, newTest] : pairsOf(before, after, oldTaken, newTaken)) {
    comparison.tests.push_back(comparedTest(
        after.tests[newTest].name, std::move(oldSpeeds[oldTest]), std::move(newSpeeds[newTest])));
  }
  std::stable_sort(comparison.tests.begin(), comparison.tests.end(),
                   [](const ComparedTest& a, const ComparedTest& b) {
                     if (!a.ratio || !b.ratio) return a.ratio.has_value() && !b.ratio;
                     return *a.ratio < *b.ratio;
                   });
  addOthers(before, oldTaken, comparison.onlyOld);
  addOthers(after, newTaken, comparison.onlyNew);
  return comparison;
}

std::int64_t countOfTooFewRows(const Comparison& comparison) {
  return std::count_if(comparison.tests.begin(), comparison.tests.end(),
                       [](const ComparedTest& test) { return !test.low; });
}

std::int64_t countOfTooScattered(const Comparison& comparison, double percent) {
  return std::count_if(
      comparison.tests.begin(), comparison.tests.end(), [percent](const ComparedTest& test) {
        return test.low && test.difference == Difference::cannotTell && isBelow(test, percent);
      });
}

bool hasLoss(const Comparison& comparison, double percent) {
  return std::any_of(comparison.tests.begin(), comparison.tests.end(),
                     [percent](const ComparedTest& test) {
                       return test.difference == Difference::slower && isBelow(test, percent);
                     });
}

}  // namespace marrowbench::ctl
