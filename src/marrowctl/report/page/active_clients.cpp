#include "marrowctl/report/page/active_clients.h"

#include <algorithm>

#include "marrowctl/report/statistics.h"

namespace marrowbench::ctl {
namespace {

constexpr double kShortest = 1;  // second: tables tell times no better

struct Span {
  double from, to;
};

// From here on, until the next step, so many clients are active.
struct Step {
  double from;
  std::size_t clients;
};

// What is added up for one number of active clients.
struct Sum {
  double seconds = 0, bytes = 0;
  std::vector<double> speeds;
};

void addSpan(std::vector<Span>& spans, const ResultRow& row) {
  const auto end = static_cast<double>(row.end);
  const bool continues = !spans.empty() && row.exactStart <= spans.back().to + kBridgedPause &&
                         end >= spans.back().from;
  if (!continues) {
    spans.push_back({row.exactStart, end});
    return;
  }
  spans.back().from = std::min(spans.back().from, row.exactStart);
  spans.back().to = std::max(spans.back().to, end);
}

// A table that was put together of others may hold a client's rows in any order.
void mergeSpans(std::vector<Span>& spans) {
  std::sort(spans.begin(), spans.end(),
            [](const Span& a, const Span& b) { return a.from < b.from; });
  std::vector<Span> merged;
  for (const Span& span : spans) {
    if (merged.empty() || span.from > merged.back().to + kBridgedPause) {
      merged.push_back(span);
    } else {
      merged.back().to = std::max(merged.back().to, span.to);
    }
  }
  spans = std::move(merged);
}

std::vector<std::vector<Span>> spansBySeries(const Report& report) {
  std::vector<std::vector<Span>> spans(report.results.series.size());
  RowCursor cursor(report.results, Unpacking::nothing);
  while (cursor.next()) {
    if (cursor.row().moved) addSpan(spans[cursor.row().series], cursor.row());
  }
  for (std::vector<Span>& each : spans) mergeSpans(each);
  return spans;
}

struct Change {
  double time;
  bool isStart;
};

std::vector<Step> stepsOf(std::vector<Change>& changes) {
  std::sort(changes.begin(), changes.end(),
            [](const Change& a, const Change& b) { return a.time < b.time; });
  std::vector<Step> steps;
  std::size_t clients = 0;
  for (const Change& change : changes) {
    if (steps.empty() || steps.back().from != change.time) steps.push_back({change.time, clients});
    clients = change.isStart ? clients + 1 : clients - 1;
    steps.back().clients = clients;
  }
  return steps;
}

std::vector<std::vector<Step>> stepsByTest(const Report& report) {
  const std::vector<std::vector<Span>> spans = spansBySeries(report);
  std::vector<std::vector<Change>> changes(report.tests.size());
  for (std::size_t i = 0; i < spans.size(); ++i) {
    for (const Span& span : spans[i]) {
      changes[report.results.series[i].test].push_back({span.from, true});
      changes[report.results.series[i].test].push_back({span.to, false});
    }
  }
  std::vector<std::vector<Step>> steps;
  steps.reserve(changes.size());
  for (std::vector<Change>& each : changes) steps.push_back(stepsOf(each));
  return steps;
}

// The step in which a time lies. @pre not before the first
std::size_t stepAt(const std::vector<Step>& steps, double time) {
  const auto next = std::upper_bound(steps.begin(), steps.end(), time,
                                     [](double t, const Step& step) { return t < step.from; });
  return static_cast<std::size_t>(next - steps.begin()) - 1;
}

void addRow(std::vector<Sum>& sums, const std::vector<Step>& steps, const ResultRow& row) {
  const auto end = static_cast<double>(row.end);
  const double bytesPerSecond = static_cast<double>(row.bytes) / (end - row.exactStart);
  for (std::size_t i = stepAt(steps, row.exactStart); i + 1 < steps.size() && steps[i].from < end;
       ++i) {
    const double part = std::min(end, steps[i + 1].from) - std::max(row.exactStart, steps[i].from);
    sums[steps[i].clients].bytes += part * bytesPerSecond;
  }
  const double middle = (row.exactStart + end) / 2;
  sums[steps[stepAt(steps, middle)].clients].speeds.push_back(mibPerSecond(row));
}

std::vector<Sum> emptySums(const std::vector<Step>& steps) {
  std::size_t most = 0;
  for (const Step& step : steps) most = std::max(most, step.clients);
  std::vector<Sum> sums(most + 1);
  for (std::size_t i = 0; i + 1 < steps.size(); ++i) {
    sums[steps[i].clients].seconds += steps[i + 1].from - steps[i].from;
  }
  return sums;
}

std::vector<ActivePoint> pointsOf(std::vector<Sum>& sums) {
  std::vector<ActivePoint> points;
  for (std::size_t clients = 1; clients < sums.size(); ++clients) {
    Sum& sum = sums[clients];
    if (sum.seconds < kShortest) continue;
    points.push_back({clients, sum.seconds, sum.bytes / sum.seconds / 1048576.0,
                      sum.speeds.empty() ? 0 : median(sum.speeds)});
  }
  return points;
}

}  // namespace

std::vector<std::vector<ActivePoint>> activePointsOf(const Report& report) {
  const std::vector<std::vector<Step>> steps = stepsByTest(report);
  std::vector<std::vector<Sum>> sums;
  sums.reserve(steps.size());
  for (const std::vector<Step>& each : steps) sums.push_back(emptySums(each));
  RowCursor cursor(report.results, Unpacking::nothing);
  while (cursor.next()) {
    const ResultRow& row = cursor.row();
    if (row.moved && row.exactStart < static_cast<double>(row.end)) {
      addRow(sums[row.test], steps[row.test], row);
    }
  }
  std::vector<std::vector<ActivePoint>> points;
  points.reserve(sums.size());
  for (std::vector<Sum>& each : sums) points.push_back(pointsOf(each));
  return points;
}

}  // namespace marrowbench::ctl
