#include "results/shared_table.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
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
  for (const std::size_t length : {248U, 250U, 251U}) {
    table = folder.fileOfLength(length);
    EXPECT_EQ(append("one\n"), TableAppend::written) << length;
    test::setModified(table, 0);
    EXPECT_EQ(append("two\n"), TableAppend::written) << length;
    EXPECT_EQ(readFile(table), "header\none\n\ntwo\n\n") << length;
  }
  table = folder.fileOfLength(249);
  writeFile(table, "rows\n");
  test::setModified(table, 0);
  EXPECT_EQ(append("one\n"), TableAppend::failed);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_EQ(readFile(table), "rows\n");
  EXPECT_TRUE(test::fakeClock().sleeps.empty());
}

TEST_F(AppendToTable, TellsWhyThereIsNoLock) {
  table = folder.file("missing/res.csv");
  EXPECT_EQ(append("one\n"), TableAppend::locked);
  EXPECT_EQ(errno, ENOENT);
}

// The time is read for the lock's note: at that moment this client stands still for hours.
TEST_F(AppendToTable, WritesNothingUnderALockThatWasTakenOver) {
  test::fakeClock().duringReading = [this] {
    std::filesystem::remove(lock.c_str());
    writeFile(lock, "other");
  };
  EXPECT_EQ(append("one\n"), TableAppend::takenOver);
  EXPECT_FALSE(exists(table));
  EXPECT_EQ(readFile(lock), "other");
}

TEST_F(AppendToTable, FollowsALinkToTheTable) {
  const FixedString file = folder.file("real.csv");
  std::filesystem::create_symlink(file.c_str(), table.c_str());
  EXPECT_EQ(append("one\n"), TableAppend::written);
  EXPECT_EQ(append("two\n"), TableAppend::written);
  EXPECT_EQ(readFile(file), "header\none\n\ntwo\n\n");
}

TEST_F(AppendToTable, TellsWhyATableCannotBeOpened) {
  std::filesystem::create_directory(table.c_str());
  EXPECT_EQ(append("one\n"), TableAppend::failed);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(exists(lock));
}

TEST_F(AppendToTable, WritesToAPipeAsItIs) {
  ASSERT_EQ(mkfifo(table.c_str(), 0666), 0);
  const int reader = open(table.c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(append("one\n"), TableAppend::written);
  std::array<char, 100> text{};
  EXPECT_EQ(read(reader, text.data(), text.size()), 5);
  EXPECT_STREQ(text.data(), "one\n\n") << "no header: the table exists";
  close(reader);
}

TEST_F(AppendToTable, TakesNothingBackFromADevice) {
  std::filesystem::create_symlink("/dev/full", table.c_str());
  EXPECT_EQ(append("one\n"), TableAppend::failed);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_TRUE(exists(table));
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

// At the first write beyond the limit, in place of what other clients do at that moment.
class InterruptedAppend : public AppendToTable {
 protected:
  InterruptedAppend() {
    shared = table;
    sharedLock = lock;
  }

  // Appends a row of which five characters fit.
  TableAppend appendCut(void (*meanwhile)(int)) {
    const test::FileSizeLimit limit(before.size() + 5);
    (void)std::signal(SIGXFSZ, meanwhile);
    return append("a row that is longer\n");
  }

  static inline FixedString shared;
  static inline FixedString sharedLock;
  const std::string before = std::string(300, 'x') + "\n\n";  // longer than the lock's note
};

TEST_F(InterruptedAppend, TakesNothingBackWhereAnotherClientWrote) {
  writeFile(table, before);
  EXPECT_EQ(appendCut([](int) {
              const test::FileSizeLimit noLimit(RLIM_INFINITY);
              writeFile(shared, readFile(shared) + "other\n");
            }),
            TableAppend::failed);
  EXPECT_EQ(readFile(table), before + "a rowother\n");
}

TEST_F(InterruptedAppend, NeverLengthensATableThatWasMadeAnew) {
  writeFile(table, before);
  EXPECT_EQ(appendCut([](int) { writeFile(shared, "short"); }), TableAppend::failed);
  EXPECT_EQ(readFile(table), "short");
}

TEST_F(InterruptedAppend, TakesNothingBackWithoutTheLock) {
  writeFile(table, before);
  EXPECT_EQ(appendCut([](int) { std::filesystem::remove(sharedLock.c_str()); }),
            TableAppend::failed);
  EXPECT_EQ(readFile(table), before + "a row");
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
