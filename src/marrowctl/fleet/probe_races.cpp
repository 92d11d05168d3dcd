#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "marrowctl/fleet/crew.h"
#include "marrowctl/fleet/probe_steps.h"
#include "marrowctl/fleet/stopwatch.h"
#include "results/exclusive_file.h"

namespace marrowbench::ctl {
namespace {

// How much is tried, and for how long on a share that is slow.
struct Effort {
  std::size_t processes;
  int rounds;
  double seconds;
  double secondsPerStep;
};
constexpr Effort kFull = {16, 100, 10, 60};
constexpr Effort kQuick = {8, 20, 2, 10};

constexpr int kWon = 0;

// Steps in turn: try to create, and remove what was created.
void race(const ProbeFolder& folder, CrewMember& self) {
  if (chdir(folder.pathOf(self.number).c_str()) != 0) return;
  for (int round = 0;; ++round) {
    if (!self.waitForStep()) return;
    ExclusiveFile file;
    const bool hasWon = file.create(FixedString("race_" + std::to_string(round)));
    self.answer(hasWon ? kWon : errno);
    if (!self.waitForStep()) return;
    (void)file.remove();
    self.answer(0);
  }
}

void count(const std::vector<CrewAnswer>& answers, CreateRaces& races) {
  int winners = 0;
  for (const CrewAnswer& answer : answers) {
    const int code = static_cast<int>(answer.first);
    if (code == kWon) {
      ++winners;
    } else if (code != EEXIST) {
      ++races.otherAnswers[std::strerror(code)];
    }
  }
  ++races.rounds;
  ++(winners == 0 ? races.noWinner : winners == 1 ? races.oneWinner : races.severalWinners);
}

}  // namespace

std::optional<CreateRaces> raceToCreate(const ProbeFolder& folder) {
  const Effort effort = folder.isQuick ? kQuick : kFull;
  Crew crew(effort.processes, [&folder](CrewMember& self) { race(folder, self); });
  if (crew.size() < 2) return std::nullopt;
  CreateRaces races;
  races.processes = static_cast<int>(crew.size());
  const Stopwatch passed;
  while (races.rounds < effort.rounds && passed.seconds() < effort.seconds && !races.hasHung) {
    const auto answers = crew.step(effort.secondsPerStep);
    if (answers) count(*answers, races);
    races.hasHung = !answers || !crew.step(effort.secondsPerStep);
  }
  return races;
}

}  // namespace marrowbench::ctl
