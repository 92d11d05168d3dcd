#include "marrowctl/fleet/crew.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string>

#include "marrowctl/fleet/stopwatch.h"

namespace marrowbench::ctl {
namespace {

constexpr double kSecondsToEnd = 5;

struct Pipe {
  int readEnd = -1, writeEnd = -1;

  Pipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) != 0) return;
    readEnd = ends[0];
    writeEnd = ends[1];
  }
};

void closeEnd(int& end) {
  if (end >= 0) (void)close(end);
  end = -1;
}

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// Never returns. _exit: what the parent has still to print is not printed twice.
[[noreturn]] void beMember(const std::function<void(CrewMember&)>& work, CrewMember self) {
  try {
    work(self);
  } catch (...) {
    _exit(1);
  }
  _exit(0);
}

// One that waits for a share that does not answer can't be ended, and is not waited for.
void awaitEnds(const std::vector<pid_t>& members) {
  const Stopwatch waited;
  for (const pid_t member : members) {
    while (waitpid(member, nullptr, WNOHANG) == 0 && waited.seconds() < kSecondsToEnd)
      (void)usleep(1000);
  }
}

}  // namespace

bool isInterrupted() {
  sigset_t pending{};
  if (sigpending(&pending) != 0) return false;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    // Linux keeps also those that are ignored, as SIGHUP is behind nohup.
    if (sigismember(&pending, signal) == 1 && !isIgnored(signal)) return true;
  }
  return false;
}

bool CrewMember::waitForStep() {
  const int gate = gates.at(steps++ % gates.size());
  char go = 0;
  ssize_t count = 0;
  do {
    count = read(gate, &go, 1);
  } while (count < 0 && errno == EINTR);
  return count == 1;
}

void CrewMember::answer(std::int64_t first, std::int64_t second, std::int64_t third,
                        std::int64_t fourth) const {
  const CrewAnswer said{static_cast<std::int64_t>(number), first, second, third, fourth};
  // Shorter than what a pipe takes in one piece from several writers.
  if (write(answers, &said, sizeof said) != sizeof said) _exit(1);
}

Crew::Crew(std::size_t size, const std::function<void(CrewMember& self)>& work) {
  std::array<Pipe, 2> go;
  Pipe said;
  for (std::size_t number = 0; number < size && said.writeEnd >= 0; ++number) {
    const pid_t member = fork();
    if (member < 0) break;
    if (member == 0) {
      // Else nobody would see that this program has ended.
      for (Pipe& gate : go) closeEnd(gate.writeEnd);
      closeEnd(said.readEnd);
      beMember(work, {number, {go[0].readEnd, go[1].readEnd}, said.writeEnd});
    }
    members.push_back(member);
  }
  closeEnd(said.writeEnd);
  for (std::size_t i = 0; i < go.size(); ++i) {
    gates[i] = go[i].writeEnd;
    gateReadEnds[i] = go[i].readEnd;
  }
  answers = said.readEnd;
}

Crew::~Crew() {
  for (int& gate : gates) closeEnd(gate);
  for (int& gate : gateReadEnds) closeEnd(gate);
  closeEnd(answers);
  for (const pid_t member : members) (void)kill(member, SIGKILL);
  awaitEnds(members);
}

std::optional<std::vector<CrewAnswer>> Crew::step(double seconds) {
  const Stopwatch waited;
  const std::string bytes(members.size(), 'g');
  const int gate = gates.at(steps++ % gates.size());
  const bool isLetGo =
      write(gate, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  if (members.empty() || !isLetGo) return std::nullopt;
  std::vector<CrewAnswer> said;
  while (said.size() < members.size()) {
    if (!waitForAnswer(seconds - waited.seconds())) return std::nullopt;
    CrewAnswer one;
    if (read(answers, &one, sizeof one) != sizeof one) return std::nullopt;
    said.push_back(one);
  }
  return said;
}

bool Crew::waitForAnswer(double seconds) const {
  constexpr int kLookMs = 50;  // for an interruption
  const Stopwatch waited;
  while (!isInterrupted()) {
    struct pollfd waiting {
      answers, POLLIN, 0
    };
    if (poll(&waiting, 1, kLookMs) > 0) return true;
    if (waited.seconds() > seconds) return false;
  }
  return false;
}

}  // namespace marrowbench::ctl
