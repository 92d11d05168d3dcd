#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>

#include "marrowctl/fleet/crew.h"
#include "marrowctl/fleet/probe_steps.h"
#include "marrowctl/fleet/stopwatch.h"
#include "marrowctl/support/units.h"
#include "results/shared_table.h"

namespace marrowbench::ctl {
namespace {

struct Effort {
  std::size_t clients;
  int rows;          // of each client
  int rowsAlone;     // of one that has the table to itself
  double seconds;    // after which no client begins another row
  double rereading;  // for how long a row is looked for that is not there
};
// A row's client looks for the lock for ten seconds, and a mount may show what was there before for
// 20 s.
constexpr Effort kFull = {8, 10, 20, 20, 25};
constexpr Effort kQuick = {4, 3, 5, 4, 3};
constexpr double kSecondsForLock = 10;
constexpr double kMargin = 60;
constexpr double kMicroseconds = 1e6;

constexpr const char* kTable = "table.csv";
constexpr const char* kHeader = "client,row,filler";

std::string rowOf(std::size_t client, int row) {
  return fmt::format("{},{},{:p>80}", client, row, "");
}

// Bit `row` of the answer's first number: it is told to be written.
struct Told {
  std::int64_t written = 0;
  int locked = 0, failed = 0;
};

Told appendAll(std::size_t client, int rows, double seconds) {
  Told told;
  const Stopwatch passed;
  TextBuffer header(kHeader);
  header.append('\n');
  for (int row = 0; row < rows && passed.seconds() < seconds; ++row) {
    const TextBuffer text(rowOf(client, row));
    switch (appendToTable(FixedString(kTable), header, text)) {
      case TableAppend::written:
        told.written |= std::int64_t{1} << static_cast<unsigned>(row);
        break;
      case TableAppend::locked:
        ++told.locked;
        return told;  // ten seconds are gone: more of them tell nothing new
      case TableAppend::takenOver:
      case TableAppend::failed: ++told.failed;
    }
  }
  return told;
}

// The rows of a table by their text, each with how often it is there.
struct FoundRows {
  std::map<std::string, int> rows;
  int headers = 0;
};

FoundRows readTable(const std::string& path) {
  FoundRows found;
  std::istringstream lines(readProbeFile(path).value_or(""));
  for (std::string line; std::getline(lines, line);) {
    if (line == kHeader) {
      ++found.headers;
    } else if (!line.empty()) {
      ++found.rows[line];
    }
  }
  return found;
}

void judgeRows(const FoundRows& found, const std::set<std::string>& told, RowTest& test) {
  test.headers = found.headers;
  test.told = static_cast<int>(told.size());
  test.kept = test.strange = 0;
  for (const auto& [row, times] : found.rows) {
    const bool isRight = times == 1 && told.contains(row);
    ++(isRight ? test.kept : test.strange);
  }
}

// Again and again where a row is missing: this mount may still show what was there before.
void readUntilComplete(const std::string& path, const std::set<std::string>& told, double seconds,
                       RowTest& test) {
  constexpr useconds_t kPauseMicroseconds = 100'000;
  const Stopwatch passed;
  do {
    judgeRows(readTable(path), told, test);
    if (test.kept == test.told) return;
    (void)usleep(kPauseMicroseconds);
  } while (passed.seconds() < seconds && !isInterrupted());
}

// In a folder of its own, relative to which the members name the table: however long the path of
// the share is, the lock's name is not cut.
// Nothing where fewer processes could be started than are needed.
std::optional<RowTest> appendTogether(const ProbeFolder& folder, const std::string& name,
                                      std::size_t clients, int rows, double& seconds) {
  const Effort effort = folder.isQuick ? kQuick : kFull;
  Crew crew(clients, [&folder, &name, &effort, rows](CrewMember& self) {
    const std::string place = folder.pathOf(self.number) + "/" + name;
    if (chdir(place.c_str()) != 0 || !self.waitForStep()) return;
    const Stopwatch passed;
    const Told told = appendAll(self.number, rows, effort.seconds);
    self.answer(told.written, told.locked, told.failed,
                static_cast<std::int64_t>(passed.seconds() * kMicroseconds));
  });
  if (crew.size() < std::min<std::size_t>(clients, 2)) return std::nullopt;
  RowTest test;
  test.clients = static_cast<int>(crew.size());
  const auto answers = crew.step(effort.seconds + kSecondsForLock + kMargin);
  test.hasHung = !answers;
  if (!answers) return test;
  std::set<std::string> told;
  for (const CrewAnswer& answer : *answers) {
    for (int row = 0; row < rows; ++row) {
      if ((answer.first >> static_cast<unsigned>(row) & 1) != 0)
        told.insert(rowOf(static_cast<std::size_t>(answer.member), row));
    }
    test.locked += static_cast<int>(answer.second);
    test.failed += static_cast<int>(answer.third);
    seconds = static_cast<double>(answer.fourth) / kMicroseconds;
  }
  const std::string table = folder.path + "/" + name + "/" + kTable;
  readUntilComplete(table, told, effort.rereading, test);
  test.leavesLock = access((table + "_lock.txt").c_str(), F_OK) == 0;
  return test;
}

bool makePlace(const ProbeFolder& folder, const std::string& name) {
  constexpr double kSeconds = 65;
  if (mkdir((folder.path + "/" + name).c_str(), 0777) != 0) return false;
  return folder.second.empty() || isShownWithin(folder.second + "/" + name, kSeconds);
}

}  // namespace

void judgeRowsAlone(const RowTest& alone, double seconds, Probe& probe) {
  const auto complain = [&probe](const std::string& what) {
    probe.troubles.push_back(what + ", with nobody else there");
  };
  const bool isWhole = alone.locked + alone.failed == 0;
  if (alone.locked > 0) complain("a single client waited for the lock in vain");
  if (alone.failed > 0) {
    complain(fmt::format("a single client could not write {}", shownCount(alone.failed, "row")));
  }
  if (alone.told == 0 && isWhole) complain("a single client got no row written");
  if (alone.kept < alone.told) {
    complain(fmt::format("of {} of a single client {} are in the table",
                         shownCount(alone.told, "row"), alone.kept));
  } else if (alone.told > 0 && isWhole) {
    probe.secondsPerRow = seconds / alone.told;
  }
}

void appendRows(const ProbeFolder& folder, Probe& probe) {
  const Effort effort = folder.isQuick ? kQuick : kFull;
  double seconds = 0;
  if (!makePlace(folder, "alone") || !makePlace(folder, "together")) {
    probe.troubles.emplace_back("a folder can't be made");
    return;
  }
  const auto alone = appendTogether(folder, "alone", 1, effort.rowsAlone, seconds);
  if (isInterrupted() || !alone) return;
  judgeRowsAlone(*alone, seconds, probe);
  probe.rows = appendTogether(folder, "together", effort.clients, effort.rows, seconds);
}

}  // namespace marrowbench::ctl
