#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include "marrowctl/report/completeness.h"
#include "marrowctl/report/text_parts.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"
#include "marrowctl/table/assignment.h"

namespace marrowbench::ctl {
namespace {

constexpr int kMargin = 4;
// Columns of a terminal on which the reason of an answer stands behind it, not below.
constexpr int kLeastForReasons = 72;
// Of one kind; --json has them all.
constexpr std::size_t kMostShown = 10;

// The first line of a wrapped text stands further to the left.
std::string hanging(const std::string& text, int width) {
  std::string lines = wrapped(text, kMargin, width);
  lines.erase(0, kMargin - 2);
  return lines;
}

std::string more(std::size_t count) {
  if (count <= kMostShown) return {};
  return fmt::format("  and {} more: --json has all\n",
                     shownCount(static_cast<std::int64_t>(count - kMostShown)));
}

Tone toneOf(std::optional<bool> answer) {
  if (!answer) return Tone::yellow;
  return *answer ? Tone::green : Tone::red;
}

std::string answerLine(const char* question, std::optional<bool> answer, const std::string& why,
                       const TextStyle& style) {
  const char* word = "cannot tell";
  if (answer) word = *answer ? "yes" : "no";
  const std::string front = fmt::format("  {:<38}", question);
  if (style.width < kLeastForReasons) {
    return front + toned(word, toneOf(answer), style) + "\n" + wrapped(why, kMargin, style.width);
  }
  std::string lines = wrapped(fmt::format("{:<12} {}", word, why), kMargin + 36, style.width);
  lines.erase(0, kMargin + 36);
  const std::string_view shown(word);
  return front + toned(shown, toneOf(answer), style) + lines.substr(shown.size());
}

std::string whyComplete(const Report& report) {
  if (report.verdict.complete == true) return "every expected row is there";
  if (report.verdict.complete == false) return "rows, clients or done markers are missing";
  if (!report.clients.expected && !report.rows.expected)
    return "--settings tells the expected rows, --hosts or --clients the clients";
  if (!report.clients.expected) return "--hosts or --clients tells the expected clients";
  return "--settings tells the expected rows";
}

std::string whyConcurrent(const Report& report) {
  const bool isAnyTooShort = std::any_of(report.tests.begin(), report.tests.end(),
                                         [](const TestReport& test) { return test.isTooShort; });
  if (report.verdict.concurrent == true && isAnyTooShort)
    return "in each test of 3 s or more all were active half of the time or more";
  if (report.verdict.concurrent == true)
    return "in each test all were active half of the time or more";
  if (report.verdict.concurrent == false)
    return "in some test all were active for less than half of the time: do not add up its speeds";
  if (report.clients.found < 2) return "there is one client";
  if (report.results.runs.judged > 1) return "several runs are taken together";
  return "every test is shorter than 3 s";
}

std::string whyClean(const Report& report) {
  return report.verdict.clean ? "no failed, damaged or unreadable row"
                              : "failed, damaged or unreadable rows are told below";
}

std::string runsText(const Report& report, const TextStyle& style) {
  const RunCount& runs = report.results.runs;
  if (runs.found == runs.judged) return {};
  return wrapped(
      fmt::format("The tables hold {} runs; this is the newest one. --all-runs takes all together.",
                  shownCount(runs.found)),
      2, style.width);
}

std::string unknownHostsText(const Report& report, const TextStyle& style) {
  const auto& hosts = report.results.hosts;
  if (std::find(hosts.begin(), hosts.end(), kUnknownHost) == hosts.end()) return {};
  return wrapped(
      "Nothing in the tables names the client of some rows, shown as \"?\": --hosts or "
      "--host-pattern tell where names stand; put [host] into the paths next time.",
      2, style.width);
}

// Those with rows in the judged runs that have a name and may be expected.
std::vector<std::uint32_t> namedHosts(const Report& report) {
  const std::vector<std::string>& strangers = report.clients.strangers;
  std::set<std::uint32_t> hosts;
  for (const TestReport& test : report.tests) {
    for (const ClientReport& client : test.clients) {
      const std::string& name = report.results.hosts[client.host];
      const bool isStranger =
          std::find(strangers.begin(), strangers.end(), name) != strangers.end();
      if (name != kUnknownHost && !isStranger) hosts.insert(client.host);
    }
  }
  return {hosts.begin(), hosts.end()};
}

std::int64_t rowsOf(const TestReport& test, std::uint32_t host) {
  const auto client = std::find_if(test.clients.begin(), test.clients.end(),
                                   [host](const ClientReport& each) { return each.host == host; });
  return client == test.clients.end() ? 0 : client->rows;
}

// Both ends of the time in which all were active are known to a second.
bool isRough(const Report& report) {
  constexpr double kFewSeconds = 10;
  return std::any_of(report.tests.begin(), report.tests.end(), [](const TestReport& test) {
    return test.clients.size() > 1 && !test.isTooShort && test.allActive &&
           test.allActive->seconds < kFewSeconds;
  });
}

}  // namespace

std::string verdictText(const Report& report, const TextStyle& style) {
  std::string text = wrapped(printable(report.verdict.text) + ".", 0, style.width) + "\n";
  text += answerLine("Is everything there?", report.verdict.complete, whyComplete(report), style);
  text += answerLine("Did the clients run at the same time?", report.verdict.concurrent,
                     whyConcurrent(report), style);
  text += answerLine("Is every row good?", report.verdict.clean, whyClean(report), style);
  return text + runsText(report, style) + unknownHostsText(report, style);
}

std::string stragglersText(const Report& report, const TextStyle& style) {
  std::string text;
  std::size_t count = 0;
  for (std::size_t i = 0; i < report.tests.size(); ++i) {
    for (const Straggler& straggler : report.tests[i].stragglers) {
      if (++count > kMostShown) continue;
      text += hanging(fmt::format("{}: {} MiB/s, {:.2f} times the median of the clients, in {}",
                                  printable(report.results.hosts[straggler.host]),
                                  shownSpeed(straggler.medianMibPerSecond), straggler.ratio,
                                  printable(report.results.tests[i].name)),
                      style.width);
    }
  }
  if (count == 0) return {};
  return titleText("Clients far from the others", style) + text + more(count);
}

std::string suspicionsText(const Report& report, const TextStyle& style) {
  std::string text;
  for (std::size_t i = 0; i < report.suspicions.size() && i < kMostShown; ++i) {
    const Suspicion& suspicion = report.suspicions[i];
    std::string message;
    if (suspicion.test != kNone)
      message = printable(report.results.tests[suspicion.test].name) + ": ";
    message += suspicion.message;
    if (!suspicion.hosts.empty()) message += " (" + shownNames(suspicion.hosts) + ")";
    text += hanging(message + " [" + std::string(suspicion.name) + "]", style.width);
    text += wrapped("-> " + suspicion.remedy, kMargin, style.width);
  }
  if (text.empty()) return {};
  return titleText("What makes figures doubtful", style) + text + more(report.suspicions.size());
}

std::string missingRowsText(const Report& report, const TextStyle& style) {
  if (!report.rows.expected || report.verdict.complete != false) return {};
  const std::vector<std::uint32_t> hosts = namedHosts(report);
  std::string text;
  std::size_t count = 0;
  for (std::size_t i = 0; i < report.tests.size(); ++i) {
    const std::int64_t expected = report.results.expectedRows(i);
    for (const std::uint32_t host : hosts) {
      const std::int64_t missing = expected - rowsOf(report.tests[i], host);
      if (missing <= 0 || ++count > kMostShown) continue;
      text += hanging(fmt::format("{}: {} of {} of {}", printable(report.results.hosts[host]),
                                  shownCount(missing), shownCount(expected, "row"),
                                  printable(report.results.tests[i].name)),
                      style.width);
    }
  }
  if (text.empty()) return {};
  if (count > kMostShown)
    text += "  and " + shownCount(static_cast<std::int64_t>(count - kMostShown)) + " more\n";
  return titleText("Rows that are missing", style) + text;
}

std::string damagedRowsText(const Report& report, const TextStyle& style) {
  if (report.rows.nullData == 0) return {};
  std::string text;
  std::size_t count = 0;
  for (RowCursor rows(report.results); rows.next();) {
    const ResultRow& row = rows.row();
    if (row.nullPosition <= 0 || ++count > kMostShown) continue;
    const bool isRead = report.results.tests[row.test].parameters.type == TestType::read;
    text += hanging(
        fmt::format("{}:{}: zeros in front of byte {} of {} ({})",
                    printable(report.results.files[row.file].path), row.line,
                    shownCount(row.nullPosition), printable(isRead ? rows.source() : rows.dest()),
                    printable(report.results.hosts[row.host])),
        style.width);
  }
  if (count > kMostShown) {
    text += fmt::format("  and {} more: --tidy has all\n",
                        shownCount(static_cast<std::int64_t>(count - kMostShown)));
  }
  return titleText("Rows with null data", style) + text;
}

std::string badRowsText(const Report& report, const TextStyle& style) {
  std::string text;
  for (std::size_t i = 0; i < report.errors.size() && i < kMostShown; ++i) {
    const ErrorGroup& group = report.errors[i];
    text += hanging(fmt::format("{}: {} ({})", shownCount(group.rows, "row"), printable(group.text),
                                shownNames(group.hosts)),
                    style.width);
  }
  if (!text.empty())
    text = titleText("Rows that failed", style) + text + more(report.errors.size());
  const auto& unusable = report.results.unusable;
  if (unusable.empty()) return text;
  text += titleText("Rows that can't be used", style);
  for (std::size_t i = 0; i < unusable.size() && i < kMostShown; ++i) {
    text += hanging(fmt::format("{}:{}: {}", printable(report.results.files[unusable[i].file].path),
                                unusable[i].line, unusable[i].reason),
                    style.width);
  }
  return text + more(unusable.size());
}

std::string legendText(const Report& report, const TextStyle& style) {
  const bool hasSeveral = report.clients.found > 1;
  std::string text =
      "A row is one transfer of one client, pauses included. 25 %, median and 75 %: so many of the "
      "rows are slower. CV: standard deviation by mean, small when rows are alike. 1 MiB is "
      "1,048,576 bytes; 100 MiB/s are 105 MB/s, and a link of 1 Gbit/s carries 119 MiB/s at most.";
  if (hasSeveral) {
    text +=
        " All active: what the clients got together from the moment the last one began until the "
        "first one ended; overlap: the part of the whole time that this is.";
  }
  if (isRough(report)) {
    text +=
        " Dates have whole seconds: where all were active for less than 10 s, what they got "
        "together is rough, and may be more than is possible.";
  }
  return "\n" + toned(wrapped(text, 0, style.width), Tone::faint, style);
}

}  // namespace marrowbench::ctl
