#include "marrowctl/run/console_follower.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kFileFront = "######## Loading/Waiting for settings file '";
constexpr std::string_view kFileBack = "'  ########";
constexpr std::string_view kLoaded = "Config loaded. ";
constexpr std::string_view kWaiting = "Config loaded. Waiting for the next minute to start... ";
constexpr std::string_view kNoLogFolder = "ERROR: Folder does not exists: ";
constexpr std::string_view kOpening = "___   ";
constexpr std::string_view kNullData = "Null data test: ";
constexpr std::string_view kRowLost = "marrowbench: row lost: ";

// In front of each row stand a date or as many blanks.
constexpr std::size_t kMargin = 18;
constexpr std::string_view kDateForm = "Aaa 00. 00:00.00: ";
constexpr std::int64_t kMostSeconds = 60000;  // milliseconds that are shown as seconds
constexpr std::int64_t kMinutes = INT64_C(1) << 40U;

bool fits(char c, char form) {
  if (form == '0') return c >= '0' && c <= '9';
  if (form == 'A') return c >= 'A' && c <= 'Z';
  return form == 'a' ? c >= 'a' && c <= 'z' : c == form;
}

bool hasDate(std::string_view text) {
  return text.size() >= kMargin && std::equal(kDateForm.begin(), kDateForm.end(), text.begin(),
                                              [](char form, char c) { return fits(c, form); });
}

bool isRow(std::string_view text) {
  const bool hasBlanks = text.size() > kMargin &&
                         text.substr(0, kMargin).find_first_not_of(' ') == std::string_view::npos;
  return hasBlanks || hasDate(text);
}

// The row in a line. Where the folder of the log is missing, a message stands in front of it.
std::optional<std::string_view> rowIn(std::string_view line) {
  if (isRow(line)) return line;
  if (!line.starts_with(kNoLogFolder)) return std::nullopt;
  for (std::size_t i = kNoLogFolder.size(); i < line.size(); ++i) {
    if (isRow(line.substr(i))) return line.substr(i);
  }
  return std::nullopt;
}

// "1.25s" or "2.05m.s"; -1 for any other text.
std::int64_t shownTimeFrom(std::string_view text) {
  int whole = 0, rest = 0, length = 0;
  char unit = 0;
  const std::string copy(text);
  const int found = std::sscanf(copy.c_str(), "%d.%d%c%n", &whole, &rest, &unit, &length);
  if (found != 3 || (unit != 's' && unit != 'm')) return -1;
  return (unit == 'm' ? kMinutes : 0) + whole * INT64_C(100) + rest;
}

// "1 files written ( 64.00 MiB. 1.25s. 51.200 MiB/s. Transfer speed setting: 100% )"
bool takeSummary(const std::string& report, RunIteration& iteration) {
  constexpr std::string_view kBytes = " MiB. ", kTime = "s. ";
  const std::size_t bytes = report.find(kBytes);
  if (bytes == std::string::npos) return false;
  const std::size_t time = bytes + kBytes.size();
  const std::size_t speed = report.find(kTime, time);
  if (speed == std::string::npos) return false;
  iteration.time = shownTimeFrom(std::string_view(report).substr(time, speed + 1 - time));
  iteration.mibPerSecond = std::strtod(report.c_str() + speed + kTime.size(), nullptr);
  return iteration.time >= 0;
}

}  // namespace

std::int64_t shownTime(std::int64_t milliseconds) {
  if (milliseconds <= kMostSeconds) return milliseconds / 10;
  return kMinutes + milliseconds / 60000 * 100 + milliseconds / 1000 % 60;
}

std::int64_t millisecondsOf(std::int64_t shown) {
  if (shown < kMinutes) return shown * 10;
  shown -= kMinutes;
  return shown / 100 * 60000 + shown % 100 * 1000;
}

void ConsoleFollower::take(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    rest += text.substr(0, end);
    if (end == text.size()) break;
    takeLine(rest);
    rest.clear();
    text.remove_prefix(end + 1);
  }
  if (dotsFollow) dots = static_cast<std::int64_t>(rest.size());
}

void ConsoleFollower::takeLine(std::string_view line) {
  if (line.starts_with(kFileFront)) return beginFile(line);
  if (line.starts_with(kRowLost) && !all.empty()) {
    all.back().rowLost = true;
    if (lost++ == 0) loss = line.substr(kRowLost.size());
  } else if (phaseNow == RunPhase::waitingForFile) {
    takeLineOfWait();
  } else if (phaseNow == RunPhase::reading && line.starts_with(kWaiting)) {
    phaseNow = RunPhase::waitingForMinute;
    waitSeconds = std::strtoll(std::string(line.substr(kWaiting.size())).c_str(), nullptr, 10);
  } else if (phaseNow == RunPhase::reading && line == kLoaded) {
    phaseNow = RunPhase::testing;
  } else if (const auto row = rowIn(line)) {
    takeRow(row->substr(kMargin), hasDate(*row));
  }
}

// An empty line, then one with a dot for each look; it ends when the file is there.
void ConsoleFollower::takeLineOfWait() {
  if (dotsFollow) phaseNow = RunPhase::reading;
  dotsFollow = !dotsFollow;
}

void ConsoleFollower::beginFile(std::string_view line) {
  const std::string_view path = line.substr(kFileFront.size());
  paths.emplace_back(path.substr(0, path.rfind(kFileBack)));
  phaseNow = RunPhase::waitingForFile;
  dotsFollow = settingsLineFollows = false;
  dots = 0;
  test = -1;
  done = 0;
}

void ConsoleFollower::takeRow(std::string_view row, bool hasDate) {
  if (phaseNow == RunPhase::waitingForMinute) phaseNow = RunPhase::testing;
  if (phaseNow != RunPhase::testing) return;
  if (settingsLineFollows) {
    // Whatever it looks like.
    settingsLineFollows = false;
  } else if (hasDate && row.starts_with(kOpening)) {
    ++test;
    done = 0;
    settingsLineFollows = true;
  } else if (row.starts_with(kNullData) && test >= 0) {
    endIteration();
  } else {
    report = row;
  }
}

void ConsoleFollower::endIteration() {
  RunIteration& iteration = all.emplace_back();
  iteration.file = static_cast<std::uint32_t>(paths.size() - 1);
  iteration.configIndex = test;
  iteration.iteration = done++;
  if (!takeSummary(report, iteration)) iteration.error = report;
}

}  // namespace marrowbench::ctl
