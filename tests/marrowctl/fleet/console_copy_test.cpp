#include "marrowctl/fleet/console_copy.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

class ConsoleCopyTest : public testing::Test {
 protected:
  ConsoleCopyTest() : path(folder.file("console__c1")), copy(std::string(path.view())) {
    EXPECT_EQ(copy.open(), 0);
  }

  // As the program does it.
  void print(const std::string& text) const {
    ASSERT_EQ(write(copy.descriptor(), text.data(), text.size()),
              static_cast<ssize_t>(text.size()));
  }

  const test::TempFolder folder;
  const FixedString path;
  ConsoleCopy copy;
};

TEST_F(ConsoleCopyTest, FollowsAndKeepsWhatIsPrinted) {
  print("one\n");
  EXPECT_EQ(copy.follow(), "one\n");
  EXPECT_EQ(copy.follow(), "");
  EXPECT_EQ(test::readFile(path), "");
  EXPECT_EQ(copy.save(), 0);
  EXPECT_EQ(test::readFile(path), "one\n");
  print("two");
  print("\nthree");
  EXPECT_EQ(copy.save(), 0);
  EXPECT_EQ(test::readFile(path), "one\n") << "only what was followed";
  EXPECT_EQ(copy.follow(), "two\nthree");
  EXPECT_EQ(copy.save(), 0);
  EXPECT_EQ(test::readFile(path), "one\ntwo\nthree");
}

TEST_F(ConsoleCopyTest, ReplacesTheCopyOfAnEarlierRun) {
  test::writeFile(path, "a long text of an earlier run\n");
  print("now\n");
  (void)copy.follow();
  EXPECT_EQ(copy.save(), 0);
  EXPECT_EQ(test::readFile(path), "now\n");
}

TEST_F(ConsoleCopyTest, ReplacesItAlsoWhereNothingIsPrinted) {
  test::writeFile(path, "old\n");
  EXPECT_EQ(copy.save(), 0);
  EXPECT_EQ(test::readFile(path), "");
}

TEST_F(ConsoleCopyTest, TriesAgainWhatCouldNotBeWritten) {
  ConsoleCopy other(folder.path() + "/missing/console");
  ASSERT_EQ(other.open(), 0);
  ASSERT_EQ(write(other.descriptor(), "text", 4), 4);
  EXPECT_EQ(other.follow(), "text");
  EXPECT_EQ(other.save(), ENOENT);
  ASSERT_EQ(mkdir((folder.path() + "/missing").c_str(), 0700), 0);
  EXPECT_EQ(other.save(), 0);
  EXPECT_EQ(test::readFile(folder.file("missing/console")), "text");
}

TEST_F(ConsoleCopyTest, TellsWhatTheProgramWaitsFor) {
  print("----\nMarrowbench  9.1.01\n");
  (void)copy.follow();
  EXPECT_EQ(copy.programVersion(), "9.1.01");
  EXPECT_EQ(copy.awaited(), "");
  print("\n\n######## Loading/Waiting for settings file '/c/it's.bst'  ########\n\n..");
  (void)copy.follow();
  EXPECT_EQ(copy.awaited(), "/c/it's.bst");
  print(".\n11.20. 23:21.05\nConfig loaded. Waiting for");
  (void)copy.follow();
  EXPECT_EQ(copy.awaited(), "/c/it's.bst") << "the line is not at its end";
  print(" the next minute to start... 70sec \n");
  (void)copy.follow();
  EXPECT_EQ(copy.awaited(), "");
  print("Marrowbench 1\n######## Loading/Waiting for settings file 'b.bst'  ########\n");
  (void)copy.follow();
  EXPECT_EQ(copy.awaited(), "b.bst");
  EXPECT_EQ(copy.programVersion(), "9.1.01") << "the banner comes first";
}

TEST_F(ConsoleCopyTest, TakesMuchInPieces) {
  const std::string row(1000, 'x');
  for (int i = 0; i < 200; ++i) print(row + "\n");
  std::size_t bytes = 0;
  for (;;) {
    const std::size_t piece = copy.follow().size();
    if (piece == 0) break;
    bytes += piece;
  }
  EXPECT_EQ(bytes, 200'200U);
  EXPECT_EQ(copy.save(), 0);
  EXPECT_EQ(test::readFile(path).size(), 200'200U);
}

}  // namespace
}  // namespace marrowbench::ctl
