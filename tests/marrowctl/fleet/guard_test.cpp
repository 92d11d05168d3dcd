#include "marrowctl/fleet/guard.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace marrowbench::ctl {
namespace {

// A process that does nothing until a signal ends it.
class Sleeper {
 public:
  Sleeper() : id(fork()) {
    if (id == 0) {
      for (;;) (void)pause();
    }
  }
  Sleeper(const Sleeper&) = delete;
  Sleeper& operator=(const Sleeper&) = delete;
  ~Sleeper() {
    if (isThere()) (void)kill(id, SIGKILL);
    if (!isCollected) (void)waitpid(id, nullptr, 0);
  }

  [[nodiscard]] bool isThere() const { return !isCollected && kill(id, 0) == 0; }

  int signalThatEndsIt() {
    int status = 0;
    (void)waitpid(id, &status, 0);
    isCollected = true;
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

  const pid_t id;
  bool isCollected = false;
};

TEST(Guard, LeavesAProcessAloneWhenItIsLetGo) {
  Sleeper sleeper;
  {
    Guard guard;
    ASSERT_EQ(guard.start(sleeper.id), 0);
  }
  EXPECT_TRUE(sleeper.isThere());
}

TEST(Guard, EndsTheProcessOfAStarterThatIsKilled) {
  Sleeper sleeper;
  const pid_t starter = fork();
  if (starter == 0) {
    Guard guard;
    if (guard.start(sleeper.id) == 0) (void)raise(SIGKILL);
    _exit(1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(starter, &status, 0), starter);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(sleeper.signalThatEndsIt(), SIGTERM);
}

TEST(Guard, DoesNothingWhereItIsNotStarted) { const Guard guard; }

}  // namespace
}  // namespace marrowbench::ctl
