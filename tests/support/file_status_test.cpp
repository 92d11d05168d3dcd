#include "support/file_status.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

// What fileStatus() leaves in outputs that held something else.
struct Answer {
  std::int64_t modified = 111;
  std::int64_t size = 222;
  bool isFile;

  explicit Answer(const FixedString& path) : isFile(fileStatus(path, &modified, &size)) {}
};

TEST(FileStatus, TellsTimeAndSizeOfAFile) {
  const test::TempFolder folder;
  const FixedString path = folder.file("f");
  test::writeFile(path, "12345");
  test::setModified(path, 1'600'000'000);
  const Answer answer(path);
  EXPECT_TRUE(answer.isFile);
  EXPECT_EQ(answer.modified, 1'600'000'000);
  EXPECT_EQ(answer.size, 5);
}

TEST(FileStatus, SizesHave64Bits) {
  const test::TempFolder folder;
  test::writeFile(folder.file("f"), "");
  std::filesystem::resize_file(folder.file("f").c_str(), 5'000'000'000);  // takes no blocks
  EXPECT_EQ(Answer(folder.file("f")).size, 5'000'000'000);
}

TEST(FileStatus, FoldersAndMissingEntriesGiveZeros) {
  const test::TempFolder folder;
  std::filesystem::create_symlink("nowhere", folder.file("dangling").c_str());
  for (const auto& path : {FixedString(folder.path()), folder.file("missing"),
                           folder.file("dangling"), FixedString()}) {
    const Answer answer(path);
    EXPECT_FALSE(answer.isFile) << path.view();
    EXPECT_EQ(answer.modified, 0) << path.view();
    EXPECT_EQ(answer.size, 0) << path.view();
  }
}

TEST(FileStatus, EachOutputIsOptional) {
  const test::TempFolder folder;
  const FixedString path = folder.file("f");
  test::writeFile(path, "12345");
  std::int64_t size = 0;
  EXPECT_TRUE(fileStatus(path, nullptr, &size));
  EXPECT_EQ(size, 5);
  EXPECT_TRUE(fileStatus(path));
  EXPECT_FALSE(fileStatus(folder.file("missing")));
}

TEST(FileStatus, FollowsLinks) {
  const test::TempFolder folder;
  test::writeFile(folder.file("f"), "12345");
  std::filesystem::create_symlink("f", folder.file("link").c_str());
  EXPECT_EQ(Answer(folder.file("link")).size, 5);
}

}  // namespace
}  // namespace marrowbench
