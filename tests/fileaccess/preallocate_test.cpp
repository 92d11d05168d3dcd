#include "fileaccess/preallocate.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "fakes/fake_platform.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::fakePlatform;

// A file of five bytes, open for writing.
class Preallocate : public testing::Test {
 protected:
  Preallocate() {
    test::writeFile(path, "12345");
    descriptor = open(path.c_str(), O_WRONLY);
  }
  ~Preallocate() override { (void)close(descriptor); }

  [[nodiscard]] std::uintmax_t size() const { return std::filesystem::file_size(path.c_str()); }

  test::TempFolder folder;
  FixedString path = folder.file("file");
  int descriptor = -1;
};

TEST_F(Preallocate, AsksForOneRunOfBlocksAndSetsTheLength) {
  EXPECT_TRUE(preallocateFile(descriptor, 4096));
  const auto& asked = fakePlatform().reservations;
  ASSERT_EQ(asked.size(), 1U);
  EXPECT_EQ(asked[0].descriptor, descriptor);
  EXPECT_EQ(asked[0].kind, Reservation::contiguous);
  EXPECT_EQ(asked[0].length, 4096);
  EXPECT_EQ(size(), 4096U);
}

TEST_F(Preallocate, TakesAnyBlocksWhenThereIsNoSuchRun) {
  fakePlatform().answers = {ENOSPC, 0};
  EXPECT_TRUE(preallocateFile(descriptor, 4096));
  const auto& asked = fakePlatform().reservations;
  ASSERT_EQ(asked.size(), 2U);
  EXPECT_EQ(asked[1].descriptor, descriptor);
  EXPECT_EQ(asked[1].kind, Reservation::anywhere);
  EXPECT_EQ(asked[1].length, 4096);
  EXPECT_EQ(size(), 4096U);
}

TEST_F(Preallocate, FailsWithTheSecondReasonAndLeavesTheLength) {
  fakePlatform().answers = {ENOSPC, EOPNOTSUPP};
  EXPECT_FALSE(preallocateFile(descriptor, 4096));
  EXPECT_EQ(errno, EOPNOTSUPP);
  EXPECT_EQ(fakePlatform().reservations.size(), 2U);
  EXPECT_EQ(size(), 5U);
}

TEST_F(Preallocate, ShortensAFileToItsSize) {
  EXPECT_TRUE(preallocateFile(descriptor, 0));
  EXPECT_EQ(size(), 0U);
}

TEST_F(Preallocate, FailsWhenTheLengthCantBeSet) {
  const int readOnly = open(path.c_str(), O_RDONLY);
  EXPECT_FALSE(preallocateFile(readOnly, 4096));
  EXPECT_EQ(errno, EINVAL);
  (void)close(readOnly);
}

TEST_F(Preallocate, NeverPassesANegativeSizeToTheSystem) {
  errno = 0;
  EXPECT_FALSE(preallocateFile(descriptor, -4096));
  EXPECT_EQ(errno, EINVAL);
  EXPECT_TRUE(fakePlatform().reservations.empty());
  EXPECT_EQ(size(), 5U);
}

}  // namespace
}  // namespace marrowbench
