#include "marrowctl/fleet/drafts.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

TEST(Drafts, AppearAllAndLeaveNothingElse) {
  const test::TempFolder folder;
  const std::string note = folder.path() + "/note", settings = folder.path() + "/run.bst";
  {
    Drafts drafts;
    ASSERT_EQ(drafts.write({{note, "one"}, {settings, "two"}}), "");
    EXPECT_FALSE(test::exists(settings.c_str()));
    ASSERT_EQ(drafts.publish(settings), "");
  }
  EXPECT_EQ(test::readFile(note.c_str()), "one");
  EXPECT_EQ(test::readFile(settings.c_str()), "two");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

TEST(Drafts, AreReadByAllWhateverTheUmaskIs) {
  const test::TempFolder folder;
  const std::string settings = folder.path() + "/run.bst";
  const mode_t before = umask(077);
  Drafts drafts;
  EXPECT_EQ(drafts.write({{settings, "text"}}), "");
  EXPECT_EQ(drafts.publish(settings), "");
  (void)umask(before);
  struct stat status {};
  ASSERT_EQ(stat(settings.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0644U);
}

TEST(Drafts, ThoseThatAppearedGoAwayWhenAnotherOneCannot) {
  const test::TempFolder folder;
  const std::string note = folder.path() + "/note", settings = folder.path() + "/run.bst";
  Drafts drafts;
  ASSERT_EQ(drafts.write({{note, "one"}, {settings, "two"}}), "");
  // A file can't take the place of a folder.
  fs::create_directories(settings + "/in the way");
  EXPECT_EQ(drafts.publish(settings), settings + ": Is a directory");
  EXPECT_FALSE(test::exists(note.c_str()));
}

TEST(Drafts, OfTwoWhoPrepareTheSameRunTheFirstAlonePublishes) {
  const test::TempFolder folder;
  const std::string note = folder.path() + "/note", settings = folder.path() + "/run.bst";
  Drafts first;
  ASSERT_EQ(first.write({{note, "one"}, {settings, "two"}}), "");
  {
    Drafts second;
    EXPECT_EQ(second.write({{note, "three"}, {settings, "four"}}),
              folder.path() +
                  "/.note.draft is there: somebody else is publishing this run. If "
                  "nobody is, delete the .draft files beside it");
  }
  ASSERT_EQ(first.publish(settings), "");
  EXPECT_EQ(test::readFile(note.c_str()), "one");
  EXPECT_EQ(test::readFile(settings.c_str()), "two");
}

TEST(Drafts, ThatGoAwayLetTheNextOnePublish) {
  const test::TempFolder folder;
  const std::string settings = folder.path() + "/run.bst";
  {
    Drafts first;
    ASSERT_EQ(first.write({{settings, "one"}}), "");
  }
  Drafts second;
  EXPECT_EQ(second.write({{settings, "two"}}), "");
}

}  // namespace
}  // namespace marrowbench::ctl
