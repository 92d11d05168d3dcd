#include "results/sighting.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::fakeClock;

class SightingTest : public testing::Test {
 protected:
  SightingTest() { test::writeFile(file, ""); }

  test::TempFolder folder;
  FixedString file = folder.file("f");
};

TEST_F(SightingTest, IsTheSameByPathByOpeningAndOfADescriptor) {
  test::setModified(file, 1234);
  const std::optional<Sighting> seen = see(file);
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->modified, 1234);
  EXPECT_EQ(seeByOpening(file), seen);
  const int descriptor = open(file.c_str(), O_RDONLY);
  EXPECT_EQ(seeOpen(descriptor), seen);
  (void)close(descriptor);
}

TEST_F(SightingTest, ThereIsNoneOfAFolderOrOfNothing) {
  EXPECT_FALSE(see(folder.path().c_str()));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(see(folder.file("nothing")));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(seeByOpening(folder.path().c_str()));
  EXPECT_FALSE(seeByOpening(folder.file("nothing")));
  EXPECT_FALSE(seeOpen(-1));
}

TEST_F(SightingTest, DoesNotWaitForAWriterOfAPipe) {
  const FixedString pipe = folder.file("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  EXPECT_TRUE(seeByOpening(pipe));
}

TEST_F(SightingTest, FileThatCantBeOpenedIsAskedByItsPath) {
  const FixedString socket = folder.file("refuses");
  ASSERT_EQ(mknod(socket.c_str(), S_IFSOCK | 0666, 0), 0);
  EXPECT_EQ(open(socket.c_str(), O_RDONLY), -1);
  EXPECT_TRUE(seeByOpening(socket));
}

TEST_F(SightingTest, OwnFileMayHaveATimeOfLessThanNineSecondsOff) {
  const Sighting own{1, 2, 1000};
  for (const int seconds : {-8, 0, 8})
    EXPECT_TRUE(mayBeOne(own, {1, 2, 1000 + seconds})) << seconds;
  for (const int seconds : {-9, 9}) EXPECT_FALSE(mayBeOne(own, {1, 2, 1000 + seconds})) << seconds;
  EXPECT_FALSE(mayBeOne(own, {1, 3, 1000}));
  EXPECT_FALSE(mayBeOne(own, {2, 2, 1000}));
}

TEST_F(SightingTest, FileOfMoreThanThreeHoursIsAbandoned) {
  const std::int64_t now = fakeClock().seconds();
  EXPECT_FALSE(isAbandoned(Sighting{1, 2, now - 10800}, Sighting{1, 2, now - 10800}));
  EXPECT_TRUE(isAbandoned(Sighting{1, 2, now - 10801}, Sighting{1, 2, now - 10801}));
}

TEST_F(SightingTest, OnlyAFileSeenBeforeIsAbandoned) {
  const Sighting old{1, 2, 1000};
  EXPECT_TRUE(isAbandoned(old, old));
  EXPECT_FALSE(isAbandoned(std::nullopt, old));
  EXPECT_FALSE(isAbandoned(old, std::nullopt));
  EXPECT_FALSE(isAbandoned(std::nullopt, std::nullopt));
  EXPECT_FALSE(isAbandoned(old, Sighting{1, 2, 1001}));
  EXPECT_FALSE(isAbandoned(old, Sighting{1, 3, 1000}));
  EXPECT_FALSE(isAbandoned(old, Sighting{2, 2, 1000}));
}

}  // namespace
}  // namespace marrowbench
