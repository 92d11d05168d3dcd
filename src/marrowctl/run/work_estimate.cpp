#include "marrowctl/run/work_estimate.h"

#include <algorithm>

namespace marrowbench::ctl {
namespace {

// What small files take says little of large ones: it is not spent on bytes.
constexpr double kMostGrowth = 16;

}  // namespace

void WorkEstimate::Seen::add(const Seen& more) {
  iterations += more.iterations;
  milliseconds += more.milliseconds;
  moving += more.moving;
  bytes += more.bytes;
  largest = std::max(largest, more.largest);
}

void WorkEstimate::add(std::size_t test, std::int64_t iterations, double milliseconds) {
  const TestWork& work = tests[test];
  const auto count = static_cast<double>(iterations);
  Seen seen{iterations, milliseconds};
  if (work.bytes && *work.bytes > 0) {
    seen.moving = std::max(0.0, milliseconds - work.pauseMs * count);
    seen.bytes = *work.bytes * count;
    seen.largest = *work.bytes;
  }
  seenOfTest[test].add(seen);
  seenOfType[static_cast<std::size_t>(work.type)].add(seen);
  seenOfAll.add(seen);
}

bool WorkEstimate::tells(const Seen& seen, double bytes) {
  return seen.bytes > 0 && bytes <= kMostGrowth * seen.largest;
}

std::optional<double> WorkEstimate::iterationMs(std::size_t test) const {
  if (const Seen& own = seenOfTest[test]; own.iterations > 0)
    return own.milliseconds / static_cast<double>(own.iterations);
  const TestWork& work = tests[test];
  if (!work.bytes) return std::nullopt;
  for (const Seen& seen : {seenOfType[static_cast<std::size_t>(work.type)], seenOfAll}) {
    if (tells(seen, *work.bytes)) return work.pauseMs + *work.bytes * seen.moving / seen.bytes;
  }
  return std::nullopt;
}

WorkEstimate::Left WorkEstimate::left(std::size_t test, std::int64_t done, double elapsedMs) const {
  Left sum;
  for (std::size_t i = test; i < tests.size(); ++i) {
    const std::int64_t iterations = tests[i].iterations - (i == test ? done : 0);
    if (iterations <= 0) continue;
    const std::optional<double> told = iterationMs(i);
    const double one = told.value_or(tests[i].pauseMs);
    sum.isLeast = sum.isLeast || !told;
    sum.milliseconds += one * static_cast<double>(iterations);
    if (i == test) sum.milliseconds -= std::min(elapsedMs, one);
  }
  return sum;
}

}  // namespace marrowbench::ctl
