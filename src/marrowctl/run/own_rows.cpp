#include "marrowctl/run/own_rows.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "marrowctl/table/settings_lines.h"

namespace marrowbench::ctl {
namespace {

// Rows stand in the order of the iterations, but one may be lost without a word.
constexpr std::ptrdiff_t kLookAhead = 100;
// Half of the last digit that the console and the table show, in MiB per second.
constexpr double kUnsureShown = 0.0005;
constexpr double kUnsureKib = 0.5 / 1024;
// Both are computed in single precision.
constexpr double kUnsureShare = 1e-5;

bool isSpeedOf(const RowCells& cells, double mibPerSecond) {
  // Without time there is no speed: the console shows 0.
  if (cells.milliseconds == 0) return mibPerSecond == 0;
  const double speed = static_cast<double>(cells.kibPerSecond) / 1024;
  return std::abs(speed - mibPerSecond) <= kUnsureShown + kUnsureKib + kUnsureShare * speed;
}

bool hasFiguresOf(const RowCells& cells, const RunIteration& iteration) {
  if (!iteration.error.empty()) return cells.error.starts_with(iteration.error);
  return cells.error.empty() && shownTime(cells.milliseconds) == iteration.time &&
         isSpeedOf(cells, iteration.mibPerSecond);
}

}  // namespace

OwnRows::OwnRows(const Plan& plan, const ConsoleFollower& console, std::string host)
    : ownHost(std::move(host)) {
  addTests(plan, console);
}

void OwnRows::addTests(const Plan& plan, const ConsoleFollower& console) {
  // Of each file, as the console calls it, its tests by their number.
  std::map<std::pair<std::string, std::int32_t>, std::size_t> indices;
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (!writesRows(line)) continue;
      const PlannedTest& test = line.test;
      indices[{file.path, test.configIndex}] = tests.size();
      tests.push_back({parametersOf(test),
                       PathTemplate(file, test, test.source, true),
                       PathTemplate(file, test, test.dest, true),
                       {}});
    }
  }
  for (const RunIteration& iteration : console.iterations()) {
    const auto test = indices.find({console.files()[iteration.file], iteration.configIndex});
    if (test == indices.end() || iteration.rowLost) continue;
    tests[test->second].iterations.push_back(iteration);
    ++expectedRows;
  }
}

bool OwnRows::take(const RowCells& cells) {
  if (!parameters || cells.parameters != lastParameters) {
    lastParameters = cells.parameters;
    std::string reason;
    parameters = parametersOf(cells.parameters, cells.separator, reason);
  }
  if (!parameters) return false;
  const bool isFound = std::any_of(tests.begin(), tests.end(), [&](Test& test) {
    return test.parameters == *parameters && takeFrom(test, cells);
  });
  foundRows += isFound ? 1 : 0;
  return isFound;
}

bool OwnRows::takeFrom(Test& test, const RowCells& cells) {
  const auto end = std::next(test.iterations.begin(),
                             std::min<std::ptrdiff_t>(kLookAhead, std::ssize(test.iterations)));
  const auto found = std::find_if(test.iterations.begin(), end, [&](const RunIteration& iteration) {
    return hasFiguresOf(cells, iteration) &&
           test.source.isPathOf(ownHost, iteration.iteration, cells.source) &&
           test.dest.isPathOf(ownHost, iteration.iteration, cells.dest);
  });
  if (found == end) return false;
  test.iterations.erase(found);
  return true;
}

}  // namespace marrowbench::ctl
