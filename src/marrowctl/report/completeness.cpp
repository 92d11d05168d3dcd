#include "marrowctl/report/completeness.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <set>
#include <system_error>

#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"
#include "marrowctl/table/assignment.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kMarkerFront = "done__";
constexpr double kLeastOverlap = 0.5;

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// As clients name themselves, each once.
std::vector<std::string> clientNames(const std::vector<std::string>& hosts) {
  std::vector<std::string> names;
  for (const std::string& host : hosts) {
    const std::string name(hostNameFrom(host).view());
    if (!contains(names, name)) names.push_back(name);
  }
  return names;
}

// The hosts that have rows in judged runs.
std::vector<std::string> hostsWithRows(const Report& report) {
  std::set<std::uint32_t> seen;
  for (const TestReport& test : report.tests) {
    for (const ClientReport& client : test.clients) seen.insert(client.host);
  }
  std::vector<std::string> names;
  names.reserve(seen.size());
  for (const std::uint32_t host : seen) names.push_back(report.results.hosts[host]);
  return names;
}

class Judge {
 public:
  Judge(Report& judged, const ReportOptions& reportOptions)
      : report(judged), options(reportOptions), found(hostsWithRows(judged)) {}

  void run() {
    countClients();
    countRows();
    if (!options.doneFolder.empty()) lookForMarkers();
    report.verdict.complete = completeness();
    report.verdict.concurrent = concurrency();
    report.verdict.clean =
        report.rows.errors == 0 && report.rows.nullData == 0 && report.results.unusable.empty();
    report.verdict.text = sentence();
  }

 private:
  void countClients() {
    ClientCount& clients = report.clients;
    // Rows without a name are those of a client if there are no others.
    const bool hasUnknown = contains(found, kUnknownHost);
    clients.found = static_cast<std::int64_t>(found.size()) - (hasUnknown && found.size() > 1);
    expected = clientNames(options.hosts);
    if (!expected.empty()) clients.expected = static_cast<std::int64_t>(expected.size());
    if (options.clients > 0)
      clients.expected = std::max(options.clients, clients.expected.value_or(0));
    std::copy_if(expected.begin(), expected.end(), std::back_inserter(clients.missing),
                 [this](const std::string& name) { return !contains(found, name); });
    wantedFound = clients.found;
    // More clients than names: some may have any name.
    if (expected.empty() || clients.expected != static_cast<std::int64_t>(expected.size())) return;
    wantedFound = std::ssize(expected) - std::ssize(clients.missing);
    std::copy_if(found.begin(), found.end(), std::back_inserter(clients.strangers),
                 [this](const std::string& name) {
                   return name != kUnknownHost && !contains(expected, name);
                 });
  }

  void countRows() {
    for (const TestReport& test : report.tests) {
      report.rows.read += test.rows;
      report.rows.errors += test.errors;
      report.rows.nullData += test.nullData;
    }
    if (!report.results.knowsSettings || hasNoEnd()) return;
    // There may be more than were expected.
    const std::int64_t clients = std::max(report.clients.expected.value_or(0), wantedFound);
    std::int64_t perClient = 0;
    for (std::size_t i = 0; i < report.tests.size(); ++i) {
      const std::int64_t rows = report.results.expectedRows(i);
      if (rows < 0) {
        otherRows += report.tests[i].rows;
        continue;
      }
      perClient += rows;
      wantedRows += rowsOfWanted(report.tests[i]);
      countMissing(report.tests[i], rows, clients);
    }
    report.rows.expected = perClient * clients;
  }

  [[nodiscard]] bool isStranger(const ClientReport& client) const {
    return contains(report.clients.strangers, report.results.hosts[client.host]);
  }

  [[nodiscard]] std::int64_t rowsOfWanted(const TestReport& test) const {
    std::int64_t rows = 0;
    for (const ClientReport& client : test.clients) {
      if (!isStranger(client)) rows += client.rows;
    }
    return rows;
  }

  // Settings files that lead back to the first one, of which several rounds are judged together.
  [[nodiscard]] bool hasNoEnd() const {
    return options.plan != nullptr && report.results.runs.judged > 1 &&
           std::any_of(options.plan->files.begin(), options.plan->files.end(),
                       [](const PlannedFile& file) { return file.chainsBack; });
  }

  void countMissing(const TestReport& test, std::int64_t rows, std::int64_t clients) {
    std::int64_t withRows = 0;
    for (const ClientReport& client : test.clients) {
      if (isStranger(client)) continue;
      if (report.results.hosts[client.host] == kUnknownHost && clients > 1) {
        missingRows += std::max<std::int64_t>(0, rows * clients - client.rows);
        return;
      }
      missingRows += std::max<std::int64_t>(0, rows - client.rows);
      ++withRows;
    }
    missingRows += std::max<std::int64_t>(0, clients - withRows) * rows;
  }

  void lookForMarkers() {
    const std::vector<std::string> markers = markersIn(options.doneFolder);
    const std::vector<std::string>& wanted = expected.empty() ? found : expected;
    for (const std::string& host : wanted) {
      if (host != kUnknownHost && !contains(markers, host)) withoutMarker.push_back(host);
    }
    lacksMarkers = report.clients.expected &&
                   static_cast<std::int64_t>(markers.size()) < *report.clients.expected;
    // A client that finished and has no row.
    for (const std::string& host : markers) {
      if (!contains(found, host) && !contains(found, kUnknownHost) &&
          !contains(report.clients.missing, host)) {
        report.clients.missing.push_back(host);
      }
    }
  }

  [[nodiscard]] std::optional<bool> completeness() const {
    const ClientCount& clients = report.clients;
    const bool lacksClients = clients.expected && clients.found < *clients.expected;
    const bool isMissing = lacksClients || !clients.missing.empty() || missingRows > 0 ||
                           !withoutMarker.empty() || lacksMarkers;
    if (isMissing) return false;
    if (clients.expected && report.rows.expected) return true;
    return std::nullopt;
  }

  [[nodiscard]] std::optional<bool> concurrency() {
    bool isJudged = false, isConcurrent = true;
    for (const TestReport& test : report.tests) {
      const auto active = std::count_if(test.clients.begin(), test.clients.end(),
                                        [](const ClientReport& c) { return !c.isLeftOut; });
      if (active < 2 || test.isTooShort || !test.overlap) continue;
      isJudged = true;
      leastOverlap = std::min(leastOverlap, *test.overlap);
      isConcurrent = isConcurrent && *test.overlap >= kLeastOverlap;
    }
    if (!isJudged) return std::nullopt;
    return isConcurrent;
  }

  [[nodiscard]] std::string countOf(std::int64_t count, const std::optional<std::int64_t>& of,
                                    std::string_view word) const {
    if (!of) return shownCount(count, word);
    return shownCount(count) + " of " + shownCount(*of, word);
  }

  [[nodiscard]] std::string sentence() const {
    const RowCount& rows = report.rows;
    std::string text = countOf(wantedFound, report.clients.expected, "client");
    text += ", " + countOf(rows.expected ? wantedRows : rows.read, rows.expected, "row");
    text += ", " + (rows.errors == 0 ? "no error row" : shownCount(rows.errors, "error row"));
    text += ", " + (rows.nullData == 0 ? "no null data"
                                       : "null data in " + shownCount(rows.nullData, "row"));
    if (const auto unusable = report.results.unusable.size(); unusable > 0)
      text += ", " + shownCount(static_cast<std::int64_t>(unusable), "unusable row");
    if (report.verdict.concurrent)
      text += fmt::format(", overlap {:.0f} %", std::floor(leastOverlap * 100));
    return text + ": " + conclusion();
  }

  [[nodiscard]] std::string conclusion() const {
    const Verdict& verdict = report.verdict;
    std::string text;
    const auto add = [&text](const std::string& part) {
      text += (text.empty() ? "" : ", ") + part;
    };
    if (!verdict.complete) add("whether all is there cannot be told");
    if (verdict.complete) add(*verdict.complete ? "complete" : "not complete");
    if (verdict.concurrent) add(*verdict.concurrent ? "concurrent" : "not concurrent");
    add(verdict.clean ? "clean" : "not clean");
    if (!report.clients.missing.empty()) text += "; missing " + shownNames(report.clients.missing);
    if (!withoutMarker.empty()) text += "; no done marker of " + shownNames(withoutMarker);
    if (const auto& strangers = report.clients.strangers; !strangers.empty())
      text += "; not expected " + shownNames(strangers);
    if (otherRows > 0)
      text += "; " + shownCount(otherRows, "row") + " of tests that are not in the settings";
    return text;
  }

  Report& report;
  const ReportOptions& options;
  const std::vector<std::string> found;
  std::vector<std::string> expected;
  std::int64_t wantedFound = 0;  // clients with rows that are no strangers
  std::vector<std::string> withoutMarker;
  bool lacksMarkers = false;
  std::int64_t missingRows = 0;
  // Where the settings tell which rows there should be: those rows, and those of other tests.
  std::int64_t wantedRows = 0, otherRows = 0;
  double leastOverlap = 1;
};

}  // namespace

void judge(Report& report, const ReportOptions& options) { Judge(report, options).run(); }

std::vector<std::string> markersIn(const std::string& folder) {
  std::vector<std::string> hosts;
  std::error_code problem;
  for (std::filesystem::directory_iterator entry(folder, problem), end; entry != end;
       entry.increment(problem)) {
    const std::string name = entry->path().filename().string();
    if (name.starts_with(kMarkerFront)) hosts.push_back(name.substr(kMarkerFront.size()));
  }
  std::sort(hosts.begin(), hosts.end());
  return hosts;
}

std::string shownNames(const std::vector<std::string>& names, std::size_t most) {
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < most; ++i) {
    text += (i == 0 ? "" : ", ") + printable(names[i]);
  }
  if (names.size() > most)
    text += " and " + shownCount(static_cast<std::int64_t>(names.size() - most)) + " more";
  return text;
}

}  // namespace marrowbench::ctl
