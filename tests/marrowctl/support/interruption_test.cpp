#include "marrowctl/support/interruption.h"

#include <gtest/gtest.h>

#include "helpers/caught_signal.h"

namespace marrowbench::ctl {
namespace {

using test::CaughtSignal;

TEST(Interruption, TakesNoteInsteadOfEndingTheProgram) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Interruption interruption;
    EXPECT_EQ(interruption.signal(), 0) << signal;
    (void)std::raise(signal);
    EXPECT_EQ(interruption.signal(), signal);
    EXPECT_EQ(interruption.count(), 1) << signal;
    (void)std::raise(signal);
    EXPECT_EQ(interruption.count(), 2) << signal;
  }
}

TEST(Interruption, LeavesSignalsAsTheyWere) {
  const CaughtSignal before(SIGTERM);
  {
    const Interruption interruption;
    (void)std::raise(SIGTERM);
    EXPECT_EQ(CaughtSignal::count(), 0);
  }
  (void)std::raise(SIGTERM);
  EXPECT_EQ(CaughtSignal::count(), 1);
}

TEST(Interruption, LeavesAnIgnoredSignalIgnored) {
  // As under nohup.
  const auto before = std::signal(SIGHUP, SIG_IGN);
  const Interruption interruption;
  (void)std::raise(SIGHUP);
  EXPECT_EQ(interruption.count(), 0);
  (void)std::signal(SIGHUP, before);
}

}  // namespace
}  // namespace marrowbench::ctl
