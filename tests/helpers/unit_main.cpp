#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "fakes/fake_clock.h"
#include "fakes/fake_platform.h"

namespace {

// Every test starts with a fresh clock and platform.
class FreshFakes : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*info*/) override {
    marrowbench::test::fakeClock() = {};
    marrowbench::test::fakePlatform() = {};
  }
};

}  // namespace

int main(int argc, char** argv) {
  setenv("TZ", "UTC", 1);
  tzset();
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new FreshFakes);
  return RUN_ALL_TESTS();
}
