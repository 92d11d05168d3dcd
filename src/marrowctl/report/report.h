#ifndef MARROWBENCH_MARROWCTL_REPORT_REPORT_H
#define MARROWBENCH_MARROWCTL_REPORT_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/table/result_set.h"

/// What rows come to. Every text output of "marrowctl report" is made of a Report and nothing else.
namespace marrowbench::ctl {

/// The distribution of a figure over rows. Quartiles by linear interpolation between order
/// statistics.
struct Spread {
  std::int64_t count = 0;
  double min = 0, p25 = 0, median = 0, p75 = 0, max = 0, mean = 0;
  std::optional<double> cv;  ///< sample standard deviation / mean; nothing for fewer than two rows
};

/// Bytes of several clients over a stretch of time.
struct Rate {
  double seconds = 0;
  double bytes = 0;
  double mibPerSecond = 0;
};

/// A client of a test.
struct ClientReport {
  std::uint32_t host = 0;  ///< index in ResultSet::hosts
  std::int64_t rows = 0;   ///< errors included
  std::int64_t errors = 0;
  std::optional<Spread> mibPerSecond;  ///< nothing: no row moved anything
  double firstStart = 0;               ///< seconds since the epoch
  std::int64_t lastEnd = 0;
  bool isLeftOut = false;  ///< of the window in which all clients are active
};

/// A client whose median is far from those of the others.
struct Straggler {
  std::uint32_t host = 0;
  double medianMibPerSecond = 0;
  double ratio = 0;  ///< to the median of the clients' medians; above 1 it is faster
};

/// One test; same index as in ResultSet::tests.
struct TestReport {
  std::int64_t rows = 0;  ///< errors included
  std::int64_t errors = 0;
  std::int64_t nullData = 0;
  std::vector<ClientReport> clients;  ///< in the order of ResultSet::hosts
  std::optional<Spread> mibPerSecond;
  std::optional<Spread> milliseconds;
  double firstStart = 0;  ///< seconds since the epoch; of a test with rows
  std::int64_t lastEnd = 0;
  /// From the latest first start to the earliest last end of the clients that count.
  double windowStart = 0, windowEnd = 0;
  /// 0 to 1; like the rates, nothing when nothing moved or several runs are taken together.
  std::optional<double> overlap;
  bool isTooShort = false;        ///< under 3 s: what ran at the same time can't be told
  std::optional<Rate> allActive;  ///< nothing when the window is empty
  std::optional<Rate> toTheLast;
  std::vector<Straggler> stragglers;
};

struct Verdict {
  std::optional<bool> complete;    ///< nothing: it can't be told
  std::optional<bool> concurrent;  ///< the same
  bool clean = false;
  std::string text;  ///< a sentence
};

struct ClientCount {
  std::optional<std::int64_t> expected;
  std::int64_t found = 0;
  std::vector<std::string> missing;
  std::vector<std::string> strangers;  ///< they have rows, and the clients were named without them
};

struct RowCount {
  std::optional<std::int64_t> expected;
  std::int64_t read = 0;  ///< usable rows of the judged runs
  std::int64_t errors = 0;
  std::int64_t nullData = 0;
};

/// Something that makes figures doubtful.
struct Suspicion {
  std::string_view name;           ///< "client-cache", say
  std::uint32_t test = kNone;      ///< kNone: no single test
  std::vector<std::string> hosts;  ///< those that it concerns
  std::string message;
  std::string remedy;
};

/// Error rows with the same text, host, iteration and date aside.
struct ErrorGroup {
  std::string text;
  std::int64_t rows = 0;
  std::vector<std::string> hosts;
  std::int64_t first = 0, last = 0;  ///< ends of the first and the last row
};

struct Report {
  ResultSet results;
  Verdict verdict;
  ClientCount clients;
  RowCount rows;
  std::vector<TestReport> tests;
  std::vector<Suspicion> suspicions;
  std::vector<ErrorGroup> errors;
};

}  // namespace marrowbench::ctl

#endif
