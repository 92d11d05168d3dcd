#ifndef MARROWBENCH_MARROWCTL_TABLE_CLIENT_RUNS_H
#define MARROWBENCH_MARROWCTL_TABLE_CLIENT_RUNS_H

#include <cstdint>
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

  /// Takes the next row of a client.
  ///
  /// @param lines      those that it can be of, one at least
  /// @param iteration  -1: its paths do not tell it
  RowPlace next(std::uint32_t host, const LineNumbers& lines, std::int32_t iteration);

 private:
  struct Client {
    std::uint32_t run = 0;
    std::uint32_t test = 0;                                // of its last row
    std::map<std::uint32_t, std::int32_t> lastIterations;  // of each test in this run
  };
  [[nodiscard]] bool canBe(const Client& client, std::uint32_t test, std::int32_t iteration) const;

  const std::vector<ResultTest>& tests;
  std::map<std::uint32_t, Client> clients;
};

/// Which run of all a client's run is: those of clients that have all of them are counted, and
/// another client's is the newest that had begun when it began.
class RunNumbers {
 public:
  void add(std::uint32_t host, std::uint32_t run, double start);
  /// To be called before the others, when all rows were added.
  void finish();
  [[nodiscard]] std::uint32_t count() const { return static_cast<std::uint32_t>(begins.size()); }
  [[nodiscard]] std::uint32_t numberOf(std::uint32_t host, std::uint32_t run) const;
  /// When the newest run began, seconds since the epoch.
  [[nodiscard]] double newestBegin() const { return begins.empty() ? 0 : begins.back(); }

 private:
  std::map<std::uint32_t, std::vector<double>> starts;  // of each client's runs
  std::vector<double> begins;                           // of each run of all
};

}  // namespace marrowbench::ctl

#endif
