#include "results/shared_table.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>

#include "fakes/fake_clock.h"
#include "helpers/system_limits.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::exists;
using test::readFile;
using test::writeFile;

class AppendToTable : public testing::Test {
 protected:
  TableAppend append(const TextBuffer& row) { return appendToTable(table, "header\n", row); }

  test::TempFolder folder;
  FixedString table = folder.file("res.csv");
  FixedString lock = folder.file("res.csv_lock.txt");
};

TEST_F(AppendToTable, NewTableBeginsWithTheHeader) {
  EXPECT_EQ(append("one\n"), TableAppend::written);
  EXPECT_EQ(append("two\n"), TableAppend::written);
  EXPECT_EQ(readFile(table), "header\none\n\ntwo\n\n");
  EXPECT_FALSE(exists(lock));
}

TEST_F(AppendToTable, ExistingTableGetsNoHeaderEvenWhenItIsEmpty) {
  writeFile(table, "");
  EXPECT_EQ(append("one\n"), TableAppend::written);
  EXPECT_EQ(readFile(table), "one\n\n");
}

TEST_F(AppendToTable, WaitsTenSecondsForTheLock) {
  writeFile(lock, "other");
  EXPECT_EQ(append("one\n"), TableAppend::locked);
  EXPECT_EQ(test::fakeClock().sleeps.size(), 40U);
  EXPECT_FALSE(exists(table));
  EXPECT_EQ(readFile(lock), "other");
}

TEST_F(AppendToTable, RefusesAPathThatTheNameOfItsLockIsCutTo) {
  for (const std::size_t length : {248U, 251U}) {
    table = folder.fileOfLength(length);
    EXPECT_EQ(append("one\n"), TableAppend::written) << length;
    EXPECT_EQ(readFile(table), "header\none\n\n") << length;
  }
  for (const std::size_t length : {249U, 250U}) {
    table = folder.fileOfLength(length);
    writeFile(table, "rows\n");
    test::setModified(table, 0);
    EXPECT_EQ(append("one\n"), TableAppend::failed) << length;
    EXPECT_EQ(errno, ENAMETOOLONG) << length;
    EXPECT_EQ(readFile(table), "rows\n") << length;
    EXPECT_TRUE(test::fakeClock().sleeps.empty()) << length;
  }
}

TEST_F(AppendToTable, TellsWhyATableCannotBeOpened) {
  std::filesystem::create_directory(table.c_str());
  EXPECT_EQ(append("one\n"), TableAppend::failed);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(exists(lock));
}

TEST_F(AppendToTable, TakesBackTheBeginningOfARowThatDoesNotFit) {
  writeFile(table, "header\none\n\n");
  {
    const test::FileSizeLimit limit(20);
    EXPECT_EQ(append("a row that is longer\n"), TableAppend::failed);
    EXPECT_EQ(errno, EFBIG);
  }
  EXPECT_EQ(readFile(table), "header\none\n\n");
  EXPECT_FALSE(exists(lock));
}

// At the first write beyond the limit another client's row comes in, as it can where the lock
// failed.
TEST_F(AppendToTable, TakesNothingBackWhereAnotherClientWrote) {
  const std::string before = std::string(300, 'x') + "\n\n";  // longer than the lock's note
  writeFile(table, before);
  static FixedString shared;
  shared = table;
  {
    const test::FileSizeLimit limit(before.size() + 5);
    (void)std::signal(SIGXFSZ, [](int) {
      const test::FileSizeLimit noLimit(RLIM_INFINITY);
      writeFile(shared, readFile(shared) + "other\n");
    });
    EXPECT_EQ(append("a row that is longer\n"), TableAppend::failed);
  }
  EXPECT_EQ(readFile(table), before + "a rowother\n");
}

TEST_F(AppendToTable, LeavesNoTableBehindWhenTheFirstRowDoesNotFit) {
  {
    const test::FileSizeLimit limit(10);
    EXPECT_EQ(append("one\n"), TableAppend::failed);
  }
  EXPECT_FALSE(exists(table));
  EXPECT_EQ(append("one\n"), TableAppend::written);
  EXPECT_EQ(readFile(table), "header\none\n\n");
}

TEST_F(AppendToTable, CutsHeaderAndRowAtTheCapacity) {
  EXPECT_EQ(append(TextBuffer(std::string(5000, 'x'))), TableAppend::written);
  EXPECT_EQ(readFile(table), "header\n" + std::string(4993, 'x'));
}

}  // namespace
}  // namespace marrowbench
