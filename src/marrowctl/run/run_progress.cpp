#include "marrowctl/run/run_progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>

#include "marrowctl/plan/method_names.h"
#include "marrowctl/run/start_wait.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kSecond = 1000;
// The program looks for its file so often, and starts so late in its minute.
constexpr std::int64_t kLookEverySeconds = 5;
constexpr std::int64_t kLatestStart = 4;

std::string fileName(const std::string& path) {
  return printable(std::filesystem::path(path).filename().string());
}

std::string shownResult(const RunIteration& iteration) {
  if (!iteration.error.empty()) return "an error";
  if (iteration.time == 0 && iteration.mibPerSecond == 0) return "in no time";
  return fmt::format("{:.1f} MiB/s", iteration.mibPerSecond);
}

std::optional<double> share(std::int64_t sum, std::int64_t iterations) {
  if (sum == kUnknownSize || iterations <= 0) return std::nullopt;
  return static_cast<double>(sum) / static_cast<double>(iterations);
}

}  // namespace

void RunProgress::setPlan(const Plan& plan, const Totals& totals) {
  tests.clear();
  firstTests.clear();
  isWhole = true;
  std::vector<TestWork> work;
  std::size_t index = 0;
  for (const PlannedFile& planned : plan.files) {
    firstTests[planned.path] = tests.size();
    isWhole = isWhole && planned.exists && !planned.chainsBack;
    for (const PlannedLine& line : planned.lines) {
      if (line.kind != LineKind::test) continue;
      const std::int64_t moved = totals.movedByTest[index];
      const std::int64_t paused = totals.pauseMsByTest[index++];
      if (!line.test.isRun) continue;
      const std::int64_t count = std::max(0, line.test.iterations);
      tests.push_back({line.test.method, line.test.type, count});
      work.push_back(
          {line.test.type, count, share(moved, count), share(paused, count).value_or(0)});
    }
  }
  estimate = WorkEstimate(std::move(work));
  for (const auto& [key, time] : spent) {
    if (const auto test = indexOf(key)) estimate.add(*test, time.iterations, time.milliseconds);
  }
}

std::optional<std::size_t> RunProgress::indexOf(const TestKey& key) const {
  const auto first = firstTests.find(key.first);
  if (first == firstTests.end() || key.second < 0) return std::nullopt;
  const std::size_t index = first->second + static_cast<std::size_t>(key.second);
  return index < tests.size() ? std::optional(index) : std::nullopt;
}

void RunProgress::note(const ConsoleFollower& console, std::int64_t nowMs) {
  // What begins and ends between two looks took the time between them at most.
  if (phase != RunPhase::testing) workedAt = notedAt.value_or(nowMs);
  notedAt = nowMs;
  noteIterations(console, nowMs);
  const bool isNewFile = !console.files().empty() && file != console.files().back();
  if (isNewFile) file = console.files().back();
  if (isNewFile || phase != console.phase()) begun = workedAt = nowMs;
  if (isNewFile || looks != console.looks()) lookedAt = nowMs;
  phase = console.phase();
  looks = console.looks();
  configIndex = console.configIndex();
  done = console.iterationsDone();
  if (phase == RunPhase::waitingForMinute && begun == nowMs)
    startTime = startTimeFrom(console.shownWait(), nowMs / kSecond);
}

// What is seen at once is told apart by the times that the console shows; the rest of the time, for
// test data, tables and logs, is shared out evenly.
void RunProgress::noteIterations(const ConsoleFollower& console, std::int64_t nowMs) {
  const std::vector<RunIteration>& all = console.iterations();
  if (all.size() == iterations) return;
  double shown = 0;
  for (std::size_t i = iterations; i < all.size(); ++i)
    shown += static_cast<double>(millisecondsOf(all[i].time));
  const double rest = std::max(0.0, static_cast<double>(nowMs - workedAt) - shown);
  const double share = rest / static_cast<double>(all.size() - iterations);
  for (; iterations < all.size(); ++iterations) {
    const RunIteration& iteration = all[iterations];
    spend({console.files()[iteration.file], iteration.configIndex},
          static_cast<double>(millisecondsOf(iteration.time)) + share);
  }
  last = all.back();
  workedAt = nowMs;
}

void RunProgress::spend(const TestKey& key, double milliseconds) {
  Spent& time = spent[key];
  ++time.iterations;
  time.milliseconds += milliseconds;
  if (const auto test = indexOf(key)) estimate.add(*test, 1, milliseconds);
}

std::string RunProgress::text(std::int64_t nowMs) const {
  switch (phase) {
    case RunPhase::starting:
    case RunPhase::reading: break;
    case RunPhase::waitingForFile: return looks == 0 ? "" : waitText(nowMs);
    case RunPhase::waitingForMinute: return minuteText(nowMs);
    case RunPhase::testing: return testText(nowMs);
  }
  return {};
}

std::string RunProgress::waitText(std::int64_t nowMs) const {
  const std::int64_t next = kLookEverySeconds - (nowMs - lookedAt) / kSecond;
  return fmt::format("waiting for {} for {}, next look in {}", fileName(file),
                     shownDuration((nowMs - begun) / kSecond),
                     shownDuration(std::clamp<std::int64_t>(next, 0, kLookEverySeconds)));
}

std::string RunProgress::minuteText(std::int64_t nowMs) const {
  const std::int64_t left = startTime - nowMs / kSecond;
  if (left > 0)
    return fmt::format("{}: waiting for the full minute, {}", fileName(file), shownDuration(left));
  return fmt::format("{}: the first test begins within {} s", fileName(file), kLatestStart);
}

std::string RunProgress::testText(std::int64_t nowMs) const {
  if (configIndex < 0) return {};
  const std::string result = last ? ", last row " + shownResult(*last) : "";
  const auto index = indexOf({file, configIndex});
  // The file was changed since it was planned.
  if (!index) {
    return fmt::format("test {} of {}, iteration {}{}", configIndex + 1, fileName(file),
                       shownCount(done + 1), result);
  }
  const Test& test = tests[*index];
  const auto number = static_cast<std::int64_t>(*index) + 1;
  // What a narrow terminal may cut off stands at the end.
  return fmt::format("test {} of {}{}, iteration {} of {}{}{} ({} {})", shownCount(number),
                     isWhole ? "" : "at least ", shownCount(std::ssize(tests)),
                     shownCount(std::min(done + 1, test.iterations)), shownCount(test.iterations),
                     result, timeLeft(*index, nowMs), nameOf(test.method), nameOf(test.type));
}

std::string RunProgress::timeLeft(std::size_t test, std::int64_t nowMs) const {
  if (!isWhole) return {};
  const auto left = estimate.left(test, done, static_cast<double>(nowMs - workedAt));
  const std::int64_t seconds = std::llround(left.milliseconds / static_cast<double>(kSecond));
  if (left.isLeast && seconds == 0) return {};
  return fmt::format(", {}{} left", left.isLeast ? "at least " : "", shownDuration(seconds));
}

}  // namespace marrowbench::ctl
