#include "marrowctl/fleet/crew.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <set>

#include "support/signal_hold.h"

namespace marrowbench::ctl {
namespace {

constexpr double kSeconds = 30;

TEST(Crew, EachMemberTakesEachStepOnce) {
  constexpr std::int64_t kSteps = 200;
  Crew crew(8, [](CrewMember& self) {
    for (std::int64_t step = 0; self.waitForStep(); ++step) self.answer(step);
  });
  ASSERT_EQ(crew.size(), 8U);
  for (std::int64_t step = 0; step < kSteps; ++step) {
    const auto answers = crew.step(kSeconds);
    ASSERT_TRUE(answers);
    std::set<std::int64_t> members;
    for (const CrewAnswer& answer : *answers) {
      EXPECT_EQ(answer.first, step);
      members.insert(answer.member);
    }
    EXPECT_EQ(members.size(), 8U);
  }
}

TEST(Crew, HandsAllNumbersOn) {
  Crew crew(1, [](CrewMember& self) {
    if (self.waitForStep()) self.answer(1, -2, std::int64_t{3} << 40, 4);
  });
  const auto answers = crew.step(kSeconds);
  ASSERT_TRUE(answers);
  const CrewAnswer& answer = answers->front();
  EXPECT_EQ(answer.first, 1);
  EXPECT_EQ(answer.second, -2);
  EXPECT_EQ(answer.third, std::int64_t{3} << 40);
  EXPECT_EQ(answer.fourth, 4);
}

TEST(Crew, DoesNotWaitForOneThatHangs) {
  Crew crew(2, [](CrewMember& self) {
    if (!self.waitForStep()) return;
    if (self.number == 1) (void)pause();
    self.answer(0);
  });
  EXPECT_FALSE(crew.step(0.2));
}

TEST(Crew, DoesNotWaitForThoseThatHaveEnded) {
  Crew crew(2, [](CrewMember&) {});
  EXPECT_FALSE(crew.step(kSeconds));
}

TEST(Crew, LeavesNoProcessBehind) {
  {
    Crew crew(3, [](CrewMember&) { (void)pause(); });
  }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(Crew, StopsWhenASignalIsHeldBack) {
  struct sigaction before {
  }, note{};
  note.sa_handler = [](int) {};
  ASSERT_EQ(sigaction(SIGTERM, &note, &before), 0);
  {
    const SignalHold hold;
    EXPECT_FALSE(isInterrupted());
    ASSERT_EQ(raise(SIGTERM), 0);
    EXPECT_TRUE(isInterrupted());
    Crew crew(1, [](CrewMember&) { (void)pause(); });
    EXPECT_FALSE(crew.step(kSeconds));
  }
  EXPECT_FALSE(isInterrupted());
  ASSERT_EQ(sigaction(SIGTERM, &before, nullptr), 0);
}

TEST(IsInterrupted, NotByASignalThatIsIgnored) {
  struct sigaction before {
  }, ignore{};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(sigaction(SIGHUP, &ignore, &before), 0);
  {
    const SignalHold hold;
    ASSERT_EQ(raise(SIGHUP), 0);
    EXPECT_FALSE(isInterrupted());
  }
  ASSERT_EQ(sigaction(SIGHUP, &before, nullptr), 0);
}

}  // namespace
}  // namespace marrowbench::ctl
