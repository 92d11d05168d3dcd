#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <vector>

#include "marrowctl/report/completeness.h"
#include "marrowctl/report/text_parts.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr double kMibInMb = 1.048576;
constexpr int kSpeedColumns = 9;
constexpr int kRowColumns = 9;
constexpr int kShareColumns = 8;
// Rows, five speeds, CV and overlap, and the margin.
constexpr int kFigureColumns = 2 + kRowColumns + 5 * kSpeedColumns + 2 * kShareColumns;
constexpr int kMostBar = 30;

int barColumns(const TextStyle& style) {
  return std::clamp(style.width - kFigureColumns - 1, 0, kMostBar);
}

std::string percent(double share) { return fmt::format("{:.0f} %", std::floor(share * 100)); }

// The clients that do not count in what all got together.
std::vector<std::uint32_t> leftOutOf(const TestReport& test) {
  std::vector<std::uint32_t> hosts;
  for (const ClientReport& client : test.clients) {
    if (client.isLeftOut) hosts.push_back(client.host);
  }
  return hosts;
}

// What the clients got together, and the same as links are named.
std::string togetherText(const TestReport& test) {
  const auto clients = static_cast<std::int64_t>(test.clients.size());
  if (clients < 2 || !test.overlap) return {};
  if (test.isTooShort) return shownCount(clients) + " clients, too short to tell";
  if (!test.allActive) return shownCount(clients) + " clients, never all at once";
  const double speed = test.allActive->mibPerSecond;
  const auto left = static_cast<std::int64_t>(leftOutOf(test).size());
  const std::string who = left == 0 ? "all " + shownCount(clients)
                                    : shownCount(clients - left) + " of " + shownCount(clients);
  return fmt::format("{} active: {} MiB/s = {} MB/s", who, shownSpeed(speed),
                     shownSpeed(speed * kMibInMb));
}

std::string leftOutText(const Report& report, const TestReport& test, const TextStyle& style) {
  std::vector<std::string> names;
  for (const std::uint32_t host : leftOutOf(test)) names.push_back(report.results.hosts[host]);
  if (names.empty() || !test.allActive || test.isTooShort) return {};
  return wrapped("without " + shownNames(names) + ": too many rows failed or are missing", 2,
                 style.width);
}

// Why a test has no speed.
const char* withoutSpeed(const Report& report, std::size_t test) {
  const bool isSystem = report.results.tests[test].parameters.method == Method::system;
  const bool hasFailed = report.tests[test].errors == report.tests[test].rows;
  return isSystem || hasFailed ? "nothing was moved" : "0 ms, or nothing moved";
}

std::string headOf(const std::string& name, const TestReport& test, const TextStyle& style) {
  const std::string shown = printable(name);
  const std::string together = togetherText(test);
  const auto width = static_cast<std::size_t>(style.width);
  const std::size_t used = columnsOf(shown) + 2 + columnsOf(together);
  std::string text = toned(shown, Tone::strong, style);
  if (together.empty()) return text + "\n";
  if (used <= width) return text + std::string(width - used + 2, ' ') + together + "\n";
  return text + "\n" + rightIn(together, style.width) + "\n";
}

std::string figuresOf(const Report& report, std::size_t index, double fastest,
                      const TextStyle& style) {
  const TestReport& test = report.tests[index];
  std::string text =
      "  " + (test.mibPerSecond ? bar(test.mibPerSecond->median / fastest, barColumns(style), style)
                                : leftIn(withoutSpeed(report, index), barColumns(style)));
  text += rightIn(shownCount(test.rows), kRowColumns);
  if (!test.mibPerSecond) return text + "\n";
  const Spread& s = *test.mibPerSecond;
  for (const double speed : {s.min, s.p25, s.median, s.p75, s.max})
    text += rightIn(shownSpeed(speed), kSpeedColumns);
  text += rightIn(s.cv ? fmt::format("{:.0f} %", *s.cv * 100) : "-", kShareColumns);
  const bool canTell = test.overlap && test.clients.size() > 1 && !test.isTooShort;
  return text + rightIn(canTell ? percent(*test.overlap) : "-", kShareColumns) + "\n";
}

std::string columnTitles(const TextStyle& style) {
  std::string text = "  " + leftIn("", barColumns(style)) + rightIn("rows", kRowColumns);
  for (const char* const title : {"slowest", "25 %", "median", "75 %", "fastest"})
    text += rightIn(title, kSpeedColumns);
  text += rightIn("CV", kShareColumns) + rightIn("overlap", kShareColumns);
  return toned(text, Tone::faint, style) + "\n";
}

double fastestMedian(const Report& report) {
  double fastest = 0;
  for (const TestReport& test : report.tests) {
    if (test.mibPerSecond) fastest = std::max(fastest, test.mibPerSecond->median);
  }
  return fastest > 0 ? fastest : 1;
}

// Tests that differ in their interface alone stand in one row of the comparison.
std::string sameButMethod(const Parameters& parameters) {
  const auto kib = parameters.fileKib * 1024;
  std::string text(nameOf(parameters.type));
  text += parameters.chunkBytes > 0 ? ", " + shownSize(parameters.chunkBytes) + " chunks"
                                    : ", in one piece";
  if (parameters.type == TestType::write) text += ", " + shownSize(kib) + " files";
  if (parameters.flush) text += ", flush";
  if (parameters.preallocate) text += ", preallocated";
  if (parameters.chunkWaitMs > 0) text += ", " + shownCount(parameters.chunkWaitMs) + " ms waits";
  return text;
}

struct Medians {
  // Of each interface; of several tests that are alike the mean.
  std::map<Method, std::pair<double, int>> byMethod;
};

std::string shownMedian(const Medians& medians, Method method) {
  const auto found = medians.byMethod.find(method);
  if (found == medians.byMethod.end()) return "-";
  return shownSpeed(found->second.first / found->second.second);
}

}  // namespace

std::string testsText(const Report& report, const TextStyle& style) {
  if (report.tests.empty()) return {};
  std::string text = titleText("Speed of one client in MiB/s", style) + columnTitles(style);
  const double fastest = fastestMedian(report);
  for (std::size_t i = 0; i < report.tests.size(); ++i) {
    text += headOf(report.results.tests[i].name, report.tests[i], style);
    text += figuresOf(report, i, fastest, style);
    text += leftOutText(report, report.tests[i], style);
  }
  return text;
}

std::string interfacesText(const Report& report, const TextStyle& style) {
  constexpr int kColumns = 14;
  std::vector<std::string> order;
  std::map<std::string, Medians> rows;
  for (std::size_t i = 0; i < report.tests.size(); ++i) {
    const Parameters& parameters = report.results.tests[i].parameters;
    if (!report.tests[i].mibPerSecond) continue;
    const std::string key = sameButMethod(parameters);
    if (!rows.contains(key)) order.push_back(key);
    auto& [sum, count] = rows[key].byMethod[parameters.method];
    sum += report.tests[i].mibPerSecond->median;
    ++count;
  }
  std::string text;
  const int left = std::max(style.width - 3 * kColumns, 20);
  for (const std::string& key : order) {
    const Medians& medians = rows[key];
    if (medians.byMethod.size() < 2) continue;
    text += leftIn("  " + key, left);
    for (const Method method : {Method::stream, Method::ansiC, Method::posix})
      text += rightIn(shownMedian(medians, method), kColumns);
    text += "\n";
  }
  if (text.empty()) return {};
  std::string titles = leftIn("", left);
  for (const char* const title : {"streams", "stdio", "descriptors"})
    titles += rightIn(title, kColumns);
  return titleText("Interfaces side by side: medians in MiB/s", style) +
         toned(titles, Tone::faint, style) + "\n" + text;
}

}  // namespace marrowbench::ctl
