#ifndef MARROWBENCH_MARROWCTL_RUN_CONSOLE_FOLLOWER_H
#define MARROWBENCH_MARROWCTL_RUN_CONSOLE_FOLLOWER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marrowbench::ctl {

/// What the program is doing, as far as its console tells.
enum class RunPhase {
  starting,          ///< it has not said yet which settings file it wants
  waitingForFile,    ///< the settings file is not there yet, or was asked for only now
  reading,           ///< it was there
  waitingForMinute,  ///< of the common start
  testing
};

/// One iteration of a test, as the console tells it.
struct RunIteration {
  std::uint32_t file = 0;        ///< index in ConsoleFollower::files()
  std::int32_t configIndex = 0;  ///< number of the test in its settings file, from 0
  std::int32_t iteration = 0;    ///< from 0
  std::int64_t time = 0;         ///< shownTime() of its milliseconds
  double mibPerSecond = 0;
  std::string error;     ///< empty: none. A long one is cut
  bool rowLost = false;  ///< the program said that the row did not get into the table
};

/// A number for the form in which the console shows a time: times that look alike have the same.
[[nodiscard]] std::int64_t shownTime(std::int64_t milliseconds);

/// Milliseconds that look like this, the fewest.
[[nodiscard]] std::int64_t millisecondsOf(std::int64_t shown);

/// Reads what the program prints while it prints it. Its texts are the same in all versions, since
/// people's scripts read them, too.
class ConsoleFollower {
 public:
  /// Takes the next piece of the text, which may end anywhere.
  void take(std::string_view text);

  [[nodiscard]] RunPhase phase() const { return phaseNow; }
  /// Paths of the settings files that were asked for so far; the last one is the current one.
  [[nodiscard]] const std::vector<std::string>& files() const { return paths; }
  /// How often the current file was looked for in vain.
  [[nodiscard]] std::int64_t looks() const { return dots; }
  /// The seconds that the program shows when it waits for the minute.
  [[nodiscard]] std::int64_t shownWait() const { return waitSeconds; }
  /// Number of the current test in its file, from 0; -1: none has begun.
  [[nodiscard]] std::int32_t configIndex() const { return test; }
  /// Iterations of the current test that are done.
  [[nodiscard]] std::int32_t iterationsDone() const { return done; }
  /// All that are done, of all tests, in their order.
  [[nodiscard]] const std::vector<RunIteration>& iterations() const { return all; }
  /// Rows that the program said did not get into their table.
  [[nodiscard]] std::int64_t rowsLost() const { return lost; }
  /// Of the first of them: its table and the reason, "/srv/t.csv: still locked by another client".
  [[nodiscard]] const std::string& firstLoss() const { return loss; }

 private:
  void takeLine(std::string_view line);
  void takeLineOfWait();
  void takeRow(std::string_view row, bool hasDate);
  void beginFile(std::string_view line);
  void endIteration();

  RunPhase phaseNow = RunPhase::starting;
  std::vector<std::string> paths;
  std::vector<RunIteration> all;
  std::string rest;    // of a line whose end has not come yet
  std::string report;  // the last row of the current test
  std::string loss;    // table and reason of the first row that was lost
  std::int64_t lost = 0;
  std::int64_t dots = 0;
  std::int64_t waitSeconds = 0;
  std::int32_t test = -1;
  std::int32_t done = 0;
  bool dotsFollow = false;
  bool settingsLineFollows = false;
};

}  // namespace marrowbench::ctl

#endif
