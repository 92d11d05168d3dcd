#include "marrowctl/fleet/share_trouble.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "fakes/fake_clock.h"

namespace marrowbench::ctl {
namespace {

using test::fakeClock;

void pass(std::int64_t seconds) { fakeClock().now += seconds * 1'000'000; }

TEST(ShareTrouble, LastsWhenReadingHasFailedForAMinute) {
  for (const int code : {EIO, ESTALE, ETIMEDOUT, ENOENT, EACCES}) {
    ShareTrouble trouble;
    EXPECT_FALSE(trouble.isLasting(0));
    pass(1000);
    EXPECT_FALSE(trouble.isLasting(code)) << code;
    pass(59);
    EXPECT_FALSE(trouble.isLasting(code)) << code;
    pass(1);
    EXPECT_TRUE(trouble.isLasting(code)) << code;
  }
}

TEST(ShareTrouble, BeginsAnewWhenItWasReadMeanwhile) {
  ShareTrouble trouble;
  EXPECT_FALSE(trouble.isLasting(EIO));
  pass(59);
  EXPECT_FALSE(trouble.isLasting(0));
  pass(59);
  EXPECT_FALSE(trouble.isLasting(EIO));
  pass(59);
  EXPECT_FALSE(trouble.isLasting(EIO));
}

TEST(ShareTrouble, AWrongPlaceIsToldAtOnce) {
  for (const int code : {ENOENT, ENOTDIR, EACCES, EPERM}) {
    EXPECT_TRUE(ShareTrouble().isLasting(code)) << code;
  }
  EXPECT_FALSE(ShareTrouble().isLasting(ETIMEDOUT));
}

}  // namespace
}  // namespace marrowbench::ctl
