#include "results/exclusive_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "helpers/temp_folder.h"
#include "support/file_status.h"

namespace marrowbench {
namespace {

using test::exists;
using test::readFile;
using test::writeFile;

class ExclusiveFileTest : public testing::Test {
 protected:
  test::TempFolder folder;
  FixedString path = folder.file("f");
  ExclusiveFile file;
};

TEST_F(ExclusiveFileTest, OneClientCreatesIt) {
  ASSERT_TRUE(file.create(path));
  EXPECT_TRUE(file.isOwned());
  ExclusiveFile second;
  EXPECT_FALSE(second.create(path));
  EXPECT_EQ(errno, EEXIST);
  EXPECT_FALSE(second.isOwned());
  EXPECT_TRUE(second.remove());
  EXPECT_TRUE(exists(path)) << "it was not the second's";
}

TEST_F(ExclusiveFileTest, HoldsWhatIsWrittenAtOnce) {
  ASSERT_TRUE(file.create(path));
  file.write("a note");
  EXPECT_EQ(readFile(path), "a note");
}

TEST_F(ExclusiveFileTest, GoesWithItsOwner) {
  {
    ExclusiveFile owned;
    ASSERT_TRUE(owned.create(path));
  }
  EXPECT_FALSE(exists(path));
  ASSERT_TRUE(file.create(path));
  EXPECT_TRUE(file.remove());
  EXPECT_FALSE(file.isOwned());
  EXPECT_FALSE(exists(path));
}

TEST_F(ExclusiveFileTest, KnowsThatAnotherStandsInItsPlace) {
  ASSERT_TRUE(file.create(path));
  EXPECT_FALSE(file.isReplaced());
  writeFile(folder.file("other"), "other");
  std::filesystem::rename(folder.file("other").c_str(), path.c_str());
  EXPECT_TRUE(file.isReplaced());
  EXPECT_TRUE(file.remove());
  EXPECT_EQ(readFile(path), "other");
}

// As on sshfs, where a file has the number of its path: the times tell them apart.
TEST_F(ExclusiveFileTest, KnowsThatAnotherWithItsNumberStandsInItsPlace) {
  ASSERT_TRUE(file.create(path));
  file.write("a note");
  std::int64_t modified = 0;
  (void)fileStatus(path, &modified);
  writeFile(path, "another's");
  test::setModified(path, modified + 8);
  EXPECT_FALSE(file.isReplaced());
  test::setModified(path, modified + 10);
  EXPECT_TRUE(file.isReplaced());
  EXPECT_TRUE(file.remove());
  EXPECT_TRUE(exists(path));
}

// Its owner stood still between two calls, or what it wrote was long on its way.
TEST_F(ExclusiveFileTest, IsKnownByItsTextWhateverItsTime) {
  std::int64_t modified = 0;
  ASSERT_TRUE(file.create(path));
  (void)fileStatus(path, &modified);
  file.write("a note");
  for (const int seconds : {-60, 60, 20000}) {
    test::setModified(path, modified + seconds);
    EXPECT_FALSE(file.isReplaced()) << seconds;
  }
  for (const char* const other : {"", "a not", "a note "}) {
    writeFile(path, other);
    test::setModified(path, modified + 60);
    EXPECT_TRUE(file.isReplaced()) << other;
  }
  writeFile(path, "a note");
  test::setModified(path, modified + 60);
  EXPECT_TRUE(file.remove());
  EXPECT_FALSE(exists(path));
}

TEST_F(ExclusiveFileTest, IsNotKnownByATextThatWasNeverWritten) {
  std::int64_t modified = 0;
  ASSERT_TRUE(file.create(path));
  (void)fileStatus(path, &modified);
  test::setModified(path, modified + 60);
  EXPECT_TRUE(file.isReplaced());
}

// A write that reaches the server late is its own; on sshfs the answer may be about another's file.
TEST_F(ExclusiveFileTest, TimeOfItsLastWriteIsItsOwnUnlessItIsTooLate) {
  std::int64_t modified = 0;
  ASSERT_TRUE(file.create(path));
  (void)fileStatus(path, &modified);
  test::setModified(path, modified + 6);
  file.write("");
  test::setModified(path, modified + 12);
  EXPECT_FALSE(file.isReplaced());
  test::setModified(path, modified + 30);
  file.write("");
  EXPECT_TRUE(file.isReplaced());
  EXPECT_TRUE(file.remove());
  EXPECT_TRUE(exists(path));
}

TEST_F(ExclusiveFileTest, KnowsThatItIsGone) {
  ASSERT_TRUE(file.create(path));
  std::filesystem::remove(path.c_str());
  EXPECT_TRUE(file.isReplaced());
  EXPECT_TRUE(file.remove());
}

TEST_F(ExclusiveFileTest, IsItsOwnersWhereItCannotBeAsked) {
  const std::filesystem::path share = folder.file("share").c_str();
  std::filesystem::create_directory(share);
  path = folder.file("share/f");
  ASSERT_TRUE(file.create(path));
  std::filesystem::rename(share, share.string() + "_away");
  writeFile(folder.file("share"), "no folder: ENOTDIR");
  EXPECT_FALSE(file.isReplaced());
  EXPECT_FALSE(file.remove()) << "it was tried";
}

}  // namespace
}  // namespace marrowbench
