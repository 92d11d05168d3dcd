#include "paths/folders.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <string>

#include "helpers/environment_variable.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::exists;
using test::writeFile;

// The folders that another client makes just before this one does.
std::set<std::string>& takenByAnother() {
  static std::set<std::string> paths;
  return paths;
}

}  // namespace
}  // namespace marrowbench

// Linked in place of the C library's: another client acts between the program's look and its call.
extern "C" int mkdir(const char* path, mode_t mode) {
  if (marrowbench::takenByAnother().erase(path) != 0) (void)mkdirat(AT_FDCWD, path, mode);
  return mkdirat(AT_FDCWD, path, mode);
}

namespace marrowbench {
namespace {

class FoldersTest : public testing::Test {
 protected:
  static void leaveDanglingLink(const FixedString& path) {
    std::filesystem::create_symlink("nowhere", path.c_str());
  }

  const test::WorkingFolder folder;
};
using FolderExists = FoldersTest;
using CreateFolder = FoldersTest;
using ProvideFolderOf = FoldersTest;

TEST_F(FolderExists, LooksAtThePathWithoutOneTrailingSlash) {
  std::filesystem::create_directory("sub");
  writeFile("file", "x");
  leaveDanglingLink("link");
  const struct {
    const char* path;
    bool exists;
  } cases[] = {{"sub", true},   {"sub/", true},   {"sub//", true}, {"missing", false},
               {"file", false}, {"file/", false}, {"link", false}, {"", false}};
  for (const auto& c : cases) EXPECT_EQ(folderExists(c.path), c.exists) << c.path;
  EXPECT_TRUE(folderExists(FixedString(folder.path())));
  EXPECT_TRUE(folderExists(folder.file("")));
}

TEST_F(FolderExists, KeepsRefusingPathsGivenWithFewerThanThreeCharacters) {
  std::filesystem::create_directory("ab");
  for (const char* path : {"/", "ab", "./", "..", "."}) EXPECT_FALSE(folderExists(path)) << path;
  for (const char* path : {"ab/", "../", "./."}) EXPECT_TRUE(folderExists(path)) << path;
}

TEST_F(CreateFolder, MakesOneFolder) {
  for (const char* name : {"one", "two/"}) {
    EXPECT_TRUE(createFolder(folder.file(name), false)) << name;
    EXPECT_TRUE(folderExists(folder.file(name))) << name;
  }
  EXPECT_FALSE(createFolder(folder.file("a/b"), false));
  EXPECT_FALSE(exists(folder.file("a")));
}

TEST_F(CreateFolder, MakesTheMissingParentsWhenRecursive) {
  EXPECT_TRUE(createFolder(folder.file("a/b/c/"), true));
  EXPECT_TRUE(folderExists(folder.file("a/b/c")));
  EXPECT_TRUE(createFolder("rel/ative", true));
  EXPECT_TRUE(folderExists(folder.file("rel/ative")));
}

TEST_F(CreateFolder, ExistingFolderIsDone) {
  for (const bool recursive : {false, true}) {
    EXPECT_TRUE(createFolder(FixedString(folder.path()), recursive));
    EXPECT_TRUE(createFolder(folder.file(""), recursive));
  }
}

TEST_F(CreateFolder, FailsWithAParentThatCannotBeMade) {
  writeFile("file", "x");
  EXPECT_FALSE(createFolder(folder.file("file/a/b"), true));
  EXPECT_FALSE(createFolder(folder.file("file"), true));
  EXPECT_EQ(test::readFile("file"), "x");
}

// Like a folder that another client makes between the look and the call, a dangling link is not
// seen as a folder and yet stands in the way of mkdir().
TEST_F(CreateFolder, KeepsReportingFailureWhenAnotherClientMadeTheFolder) {
  leaveDanglingLink("new");
  EXPECT_FALSE(createFolder(folder.file("new"), false));
  EXPECT_FALSE(createFolder(folder.file("new"), true));
  EXPECT_FALSE(createFolder(folder.file("new/deeper"), true));
}

TEST_F(CreateFolder, KeepsCallingPathsOfOneCharacterDone) {
  for (const char* path : {"", "a", "/"}) EXPECT_TRUE(createFolder(path, true)) << path;
  EXPECT_FALSE(exists("a"));
}

TEST_F(CreateFolder, KeepsFailingBelowFolderNamesOfOneOrTwoCharacters) {
  // The parent of a short name is the name itself, and a short name never exists.
  for (const char* path : {"ab", "ab/", "ab/cde", "a/"}) {
    EXPECT_FALSE(createFolder(path, true)) << path;
  }
  EXPECT_FALSE(exists("ab"));
  EXPECT_TRUE(createFolder("ab", false));
  EXPECT_FALSE(createFolder("ab/cde", true));
}

TEST_F(CreateFolder, LeavesTheRightsToTheUmask) {
  const mode_t usual = umask(0);
  const bool open = createFolder("open", false);
  umask(027);
  const bool guarded = createFolder("guarded", false);
  umask(usual);
  EXPECT_TRUE(open && guarded);
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status("open").permissions(), perms(0777));
  EXPECT_EQ(std::filesystem::status("guarded").permissions(), perms(0750));
}

TEST_F(ProvideFolderOf, MakesAtMostTwoLevels) {
  EXPECT_TRUE(provideFolderOf(folder.file("a/b/log.txt")));
  EXPECT_TRUE(folderExists(folder.file("a/b")));
  EXPECT_FALSE(provideFolderOf(folder.file("x/y/z/log.txt")));
  EXPECT_FALSE(exists(folder.file("x")));
}

TEST_F(ProvideFolderOf, ExistingFolderNeedsNoParents) {
  EXPECT_TRUE(provideFolderOf("../log.txt"));
  EXPECT_FALSE(provideFolderOf("log.txt"));  // no folder in its path
}

TEST_F(ProvideFolderOf, KeepsGoingOnWhenAnotherClientMadeTheFolder) {
  leaveDanglingLink("new");
  EXPECT_TRUE(provideFolderOf(folder.file("new/log.txt")));
}

TEST_F(ProvideFolderOf, MakesTheSecondLevelWhenAnotherClientMadeTheFirst) {
  const std::string first(folder.file("new"));
  const std::string second(folder.file("new/er"));
  for (const std::set<std::string>& taken :
       {std::set{first}, std::set{second}, std::set{first, second}}) {
    takenByAnother() = taken;
    EXPECT_TRUE(provideFolderOf(folder.file("new/er/log.txt")));
    EXPECT_TRUE(folderExists(folder.file("new/er")));
    EXPECT_TRUE(takenByAnother().empty());
    std::filesystem::remove_all(first);
  }
}

TEST(TempFolderOfTheSystem, IsTempThenTmpThenTheDefault) {
  const std::string x249(249, 'x');
  const std::string x250(250, 'x');
  const std::string x300(300, 'x');
  const struct {
    const char* temp;
    const char* tmp;
    std::string folder;
  } cases[] = {{"/a", "/b", "/a/"},
               {"/a/", "/b", "/a/"},
               {nullptr, "/b", "/b/"},
               {"", "/b/", "/b/"},
               {nullptr, nullptr, "/tmp/"},
               {"", "", "/tmp/"},
               {x249.c_str(), nullptr, x249 + "/"},
               {x250.c_str(), nullptr, x250},
               {nullptr, x300.c_str(), x250}};
  for (const auto& c : cases) {
    const test::EnvironmentVariable temp("TEMP", c.temp);
    const test::EnvironmentVariable tmp("TMP", c.tmp);
    EXPECT_EQ(tempFolder().view(), c.folder);
  }
}

}  // namespace
}  // namespace marrowbench
