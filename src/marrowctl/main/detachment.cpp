#include "marrowctl/main/detachment.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "marrowctl/support/interruption.h"
#include "support/clock.h"
#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int32_t kTickMs = 50;
constexpr int kSignalBase = 128;

Outcome failed() {
  return {notDone, "",
          std::string("marrowctl: a process can't be started: ") + std::strerror(errno) + "\n"};
}

// Whether the new process has said that it goes on alone.
bool isTold(int fromNewProcess) {
  char byte = 0;
  return read(fromNewProcess, &byte, 1) == 1;
}

Outcome waitFor(pid_t process, int fromNewProcess, std::optional<SignalHold>& hold) {
  const Interruption interruption;
  hold.reset();
  int passedOn = 0;
  for (;;) {
    if (isTold(fromNewProcess)) return {};
    int status = 0;
    if (waitpid(process, &status, WNOHANG) == process) {
      // It may have said so before it ended.
      if (isTold(fromNewProcess)) return {};
      return {WIFSIGNALED(status) ? kSignalBase + WTERMSIG(status) : WEXITSTATUS(status), "", ""};
    }
    if (interruption.count() != passedOn) {
      passedOn = interruption.count();
      (void)kill(process, interruption.signal());
    }
    sleepMs(kTickMs);
  }
}

}  // namespace

Detachment::~Detachment() {
  if (toOldProcess >= 0) (void)close(toOldProcess);
}

std::optional<Outcome> Detachment::leave() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return failed();
  // A signal that comes before this process is ready to pass it on waits.
  std::optional<SignalHold> hold(std::in_place);
  const pid_t process = fork();
  if (process < 0) return failed();
  if (process == 0) {
    (void)close(ends[0]);
    (void)fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    toOldProcess = ends[1];
    (void)setsid();
    return std::nullopt;
  }
  (void)close(ends[1]);
  (void)fcntl(ends[0], F_SETFL, O_NONBLOCK);
  const Outcome outcome = waitFor(process, ends[0], hold);
  (void)close(ends[0]);
  return outcome;
}

void Detachment::goOnAlone() {
  const int nowhere = open("/dev/null", O_RDWR);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    (void)dup2(nowhere, standard);
  }
  if (nowhere > STDERR_FILENO) (void)close(nowhere);
  (void)!write(toOldProcess, "", 1);
  (void)close(toOldProcess);
  toOldProcess = -1;
}

}  // namespace marrowbench::ctl
