#ifndef MARROWBENCH_MARROWCTL_TABLE_CLIENT_RUNS_H
#define MARROWBENCH_MARROWCTL_TABLE_CLIENT_RUNS_H

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "marrowctl/table/settings_lines.h"

namespace marrowbench::ctl {

/// Where a row of a client belongs.
struct RowPlace {
  std::uint32_t test = 0;
  std::int32_t iteration = 0;
  std::uint32_t run = 0;  ///< of this client, from 0
};

/// Follows clients through the lines of their settings files, row by row. What is alike is told
/// apart by its order; where a line and an iteration come again a new run has begun.
class ClientRuns {
 public:
  /// @param resultTests  kept by the caller
  explicit ClientRuns(const std::vector<ResultTest>& resultTests) : tests(resultTests) {}

  /// Where a row of a client belongs if it is the next one.
  ///
  /// @param lines      those that it can be of, one at least
  /// @param iteration  -1: its paths do not tell it
  [[nodiscard]] RowPlace placeOf(std::uint32_t host, const LineNumbers& lines,
                                 std::int32_t iteration) const;

  /// Takes the next row of a client, with the same parameters.
  RowPlace next(std::uint32_t host, const LineNumbers& lines, std::int32_t iteration);

 private:
  struct Client {
    std::uint32_t run = 0;
    std::uint32_t test = 0;                                // of its last row
    std::map<std::uint32_t, std::int32_t> lastIterations;  // of each test in this run
  };
  [[nodiscard]] bool canBe(const Client& client, std::uint32_t test, std::int32_t iteration) const;

  const std::vector<ResultTest>& tests;
  const Client newClient{};
  std::map<std::uint32_t, Client> clients;
};

/// Which run of all a client's run is: those of clients that have all of them are counted, and
/// another client's is the one at the time of which it ran, or next to it.
class RunNumbers {
 public:
  /// Takes a row. @param start, end  seconds since the epoch
  void add(std::uint32_t host, std::uint32_t run, double start, double end);
  /// To be called before the others, when all rows were added.
  void finish();
  [[nodiscard]] std::uint32_t count() const { return static_cast<std::uint32_t>(spans.size()); }
  [[nodiscard]] std::uint32_t numberOf(std::uint32_t host, std::uint32_t run) const;
  /// When the newest run began, seconds since the epoch.
  [[nodiscard]] double newestBegin() const { return spans.empty() ? 0 : spans.back().begin; }

 private:
  struct Span {
    double begin = std::numeric_limits<double>::max();
    double end = std::numeric_limits<double>::lowest();
    void widen(const Span& more);
    /// Seconds that both have; below 0: that lie between them.
    [[nodiscard]] double shared(const Span& other) const;
  };

  std::map<std::uint32_t, std::vector<Span>> ofClients;  // their runs
  std::vector<Span> spans;                               // the runs of all
};

}  // namespace marrowbench::ctl

#endif
