#include "marrowctl/support/new_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;

std::size_t countIn(const TempFolder& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.path()), {}));
}

TEST(WriteNewFiles, WritesAllAndLeavesNothingElse) {
  const TempFolder folder;
  const std::vector<NewFile> files = {{folder.path() + "/a.bst", "one\n"},
                                      {folder.path() + "/b.bst", ""}};
  EXPECT_EQ(writeNewFiles(files, false), "");
  EXPECT_EQ(test::readFile(folder.file("a.bst")), "one\n");
  EXPECT_TRUE(test::exists(folder.file("b.bst")));
  EXPECT_EQ(countIn(folder), 2U);
}

TEST(WriteNewFiles, WritesNothingWhereOneExists) {
  const TempFolder folder;
  const std::string old = folder.path() + "/b.bst";
  test::writeFile(folder.file("b.bst"), "old");
  EXPECT_EQ(writeNewFiles({{folder.path() + "/a.bst", "new"}, {old, "new"}}, false),
            old + ": exists already; --force overwrites it");
  EXPECT_EQ(test::readFile(folder.file("b.bst")), "old");
  EXPECT_EQ(countIn(folder), 1U);
}

TEST(WriteNewFiles, TakesALinkToNowhereForAFile) {
  const TempFolder folder;
  fs::create_symlink("nowhere", folder.path() + "/a.bst");
  EXPECT_NE(writeNewFiles({{folder.path() + "/a.bst", "new"}}, false), "");
  EXPECT_FALSE(test::exists(folder.file("nowhere")));
}

TEST(WriteNewFiles, OverwritesWhenAsked) {
  const TempFolder folder;
  test::writeFile(folder.file("a.bst"), "a longer text");
  EXPECT_EQ(writeNewFiles({{folder.path() + "/a.bst", "new"}}, true), "");
  EXPECT_EQ(test::readFile(folder.file("a.bst")), "new");
}

TEST(WriteNewFiles, RenamesSoThatReadersKeepTheOldFile) {
  const TempFolder folder;
  test::writeFile(folder.file("a.bst"), "old");
  fs::create_hard_link(folder.path() + "/a.bst", folder.path() + "/reader");
  EXPECT_EQ(writeNewFiles({{folder.path() + "/a.bst", "new"}}, true), "");
  EXPECT_EQ(test::readFile(folder.file("a.bst")), "new");
  EXPECT_EQ(test::readFile(folder.file("reader")), "old");
  EXPECT_EQ(countIn(folder), 2U);
}

TEST(WriteNewFiles, TellsWhatCantBeWritten) {
  const TempFolder folder;
  const std::string path = folder.path() + "/missing/a.bst";
  EXPECT_EQ(writeNewFiles({{path, ""}}, true), path + ": No such file or directory");
  EXPECT_EQ(writeNewFiles({{folder.path(), ""}}, true), folder.path() + ": Is a directory");
  EXPECT_EQ(countIn(folder), 0U);
}

TEST(ProblemWith, IsWhatIsKnownBefore) {
  const TempFolder folder;
  const std::string path = folder.path() + "/a.bst";
  EXPECT_EQ(problemWith({{path, ""}}, false), "");
  EXPECT_EQ(problemWith({{"a.bst", ""}}, false), "");
  EXPECT_EQ(problemWith({{folder.path() + "/no/a.bst", ""}}, true),
            folder.path() + "/no/a.bst: No such file or directory");
  EXPECT_EQ(countIn(folder), 0U);
}

TEST(WriteNewFiles, WritesTheLastFileFirst) {
  const TempFolder folder;
  // The first one can't be written: the one behind it is there already.
  const std::vector<NewFile> files = {{folder.path() + "/" + std::string(300, 'x'), ""},
                                      {folder.path() + "/b.bst", "b"}};
  EXPECT_NE(writeNewFiles(files, false), "");
  EXPECT_EQ(test::readFile(folder.file("b.bst")), "b");
}

}  // namespace
}  // namespace marrowbench::ctl
