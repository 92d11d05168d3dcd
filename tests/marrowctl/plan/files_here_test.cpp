#include "marrowctl/plan/files_here.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

class FilesHereTest : public testing::Test {
 protected:
  [[nodiscard]] std::string path(const char* name) const { return folder.path() + "/" + name; }

  test::TempFolder folder;
  FilesHere here;
};

TEST_F(FilesHereTest, TellsFilesWithTheirSize) {
  test::writeFile(folder.file("a"), "four");
  EXPECT_TRUE(here.exists(path("a")));
  EXPECT_EQ(here.sizeOf(path("a")), 4);
}

TEST_F(FilesHereTest, TellsFoldersWithoutASize) {
  ASSERT_EQ(mkdir(path("sub").c_str(), 0777), 0);
  EXPECT_TRUE(here.exists(path("sub")));
  EXPECT_EQ(here.sizeOf(path("sub")), std::nullopt);
}

TEST_F(FilesHereTest, TellsWhatIsNotThere) {
  test::writeFile(folder.file("a"), "four");
  for (const char* name : {"b", "sub/a", "a/b"}) {
    EXPECT_FALSE(here.exists(path(name))) << name;
    EXPECT_EQ(here.sizeOf(path(name)), std::nullopt) << name;
  }
  EXPECT_FALSE(here.exists(""));
}

TEST_F(FilesHereTest, LooksAtAPathOnce) {
  EXPECT_FALSE(here.exists(path("a")));
  test::writeFile(folder.file("a"), "four");
  test::writeFile(folder.file("b"), "four");
  EXPECT_FALSE(here.exists(path("a")));
  EXPECT_TRUE(here.exists(path("b")));
}

TEST_F(FilesHereTest, FollowsLinks) {
  test::writeFile(folder.file("a"), "four");
  ASSERT_EQ(symlink("a", path("link").c_str()), 0);
  ASSERT_EQ(symlink("nothing", path("dangling").c_str()), 0);
  EXPECT_EQ(here.sizeOf(path("link")), 4);
  EXPECT_FALSE(here.exists(path("dangling")));
}

TEST(FilesHere, KnowsTheCurrentFolderAndTheRoot) {
  const test::WorkingFolder folder;
  test::writeFile("a", "four");
  FilesHere here;
  EXPECT_EQ(here.sizeOf("a"), 4);
  EXPECT_TRUE(here.exists("/tmp"));
}

}  // namespace
}  // namespace marrowbench::ctl
