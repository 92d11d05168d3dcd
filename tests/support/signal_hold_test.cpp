#include "support/signal_hold.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "helpers/caught_signal.h"
#include "helpers/system_limits.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::CaughtSignal;

class HeldSignal : public testing::TestWithParam<int> {};

TEST_P(HeldSignal, TakesEffectAtTheEnd) {
  const CaughtSignal caught(GetParam());
  {
    const SignalHold hold;
    (void)raise(GetParam());
    EXPECT_EQ(CaughtSignal::count(), 0);
  }
  EXPECT_EQ(CaughtSignal::count(), 1);
  (void)raise(GetParam());
  EXPECT_EQ(CaughtSignal::count(), 2) << "not held any more";
}

TEST_P(HeldSignal, StaysHeldByAnOuterHold) {
  const CaughtSignal caught(GetParam());
  const SignalHold outer;
  { const SignalHold inner; }
  (void)raise(GetParam());
  EXPECT_EQ(CaughtSignal::count(), 0);
}

INSTANTIATE_TEST_SUITE_P(Interruptions, HeldSignal,
                         testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP));

TEST(SignalHold, LeavesOtherSignalsAlone) {
  const CaughtSignal caught(SIGUSR1);
  const SignalHold hold;
  (void)raise(SIGUSR1);
  EXPECT_EQ(CaughtSignal::count(), 1);
}

TEST(LetWritesFail, MakesAWriteBeyondTheLimitFail) {
  const test::FileSizeLimit limit(1);
  const CaughtSignal caught(SIGXFSZ);
  letWritesFail();
  const test::TempFolder folder;
  const int file = open(folder.file("f").c_str(), O_WRONLY | O_CREAT, 0666);
  EXPECT_EQ(write(file, "xy", 2), 1);
  EXPECT_EQ(write(file, "y", 1), -1);
  EXPECT_EQ(errno, EFBIG);
  (void)close(file);
  EXPECT_EQ(CaughtSignal::count(), 0);
}

TEST(LetWritesFail, MakesAWriteToABrokenPipeFail) {
  const CaughtSignal caught(SIGPIPE);
  letWritesFail();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  (void)close(ends[0]);
  EXPECT_EQ(write(ends[1], "x", 1), -1);
  (void)close(ends[1]);
  EXPECT_EQ(CaughtSignal::count(), 0);
}

}  // namespace
}  // namespace marrowbench
