#include "marrowctl/fleet/guard.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace marrowbench::ctl {
namespace {

[[noreturn]] void guard(int pipeEnd, pid_t guarded) {
  // What a terminal sends to the whole group is for the guarded process and its starter.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
    (void)std::signal(signal, SIG_IGN);
  }
  // Who reads what this program prints is not to wait for the end of the guard.
  const int nowhere = open("/dev/null", O_RDWR);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    (void)dup2(nowhere, standard);
  }
  char byte = 0;
  ssize_t count = 0;
  do count = read(pipeEnd, &byte, 1);
  while (count < 0 && errno == EINTR);
  if (count == 0) (void)kill(guarded, SIGTERM);
  _exit(0);
}

}  // namespace

int Guard::start(pid_t guarded) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return errno;
  // A program that is started later must not hold it open.
  (void)fcntl(ends[1], F_SETFD, FD_CLOEXEC);
  process = fork();
  if (process == 0) {
    (void)close(ends[1]);
    guard(ends[0], guarded);
  }
  const int code = process < 0 ? errno : 0;
  (void)close(ends[0]);
  pipeEnd = ends[1];
  return code;
}

Guard::~Guard() {
  if (pipeEnd < 0) return;
  (void)!write(pipeEnd, "", 1);
  (void)close(pipeEnd);
  while (process > 0 && waitpid(process, nullptr, 0) < 0 && errno == EINTR) continue;
}

}  // namespace marrowbench::ctl
