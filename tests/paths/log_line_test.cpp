#include "paths/log_line.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "helpers/printed.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::exists;
using test::printedBy;
using test::readFile;
using test::TempFolder;

const std::string kIndent(18, ' ');

TEST(WriteLogLine, ThreeUnderscoresInTheLabelGiveAStamp) {
  const struct {
    const char* label;
    const char* text1;
    std::string row;
  } cases[] = {{"___ x", "", "Nov 14. 22:13.20: ___ x\n"},
               {"x____", "", "Nov 14. 22:13.20: x____\n"},
               {"__ _x", "", kIndent + "__ _x\n"},
               {"_", "", kIndent + "_\n"},
               {"", "___", kIndent + "___\n"},  // only the label decides
               {"", "", kIndent + "\n"}};
  for (const auto& c : cases) {
    EXPECT_EQ(printedBy([&] { writeLogLine({}, c.label, c.text1); }), c.row);
  }
}

TEST(WriteLogLine, JoinsItsColumnsWithNothingBetween) {
  EXPECT_EQ(printedBy([] { writeLogLine({}, "a", "b ", "c", " d", "e"); }), kIndent + "ab c de\n");
}

TEST(WriteLogLine, CutsTheWholeRowAt500Characters) {
  const FixedString x(std::string(240, 'x'));
  const TempFolder folder;
  const std::string row =
      printedBy([&] { writeLogLine(folder.file("log.txt"), "a", x, x, "end", "!"); });
  EXPECT_EQ(row, kIndent + "a" + std::string(480, 'x') + "e\n");
  EXPECT_EQ(readFile(folder.file("log.txt")), row);
}

TEST(WriteLogLine, AppendsTheRowToTheLogToo) {
  const TempFolder folder;
  const FixedString log = folder.file("log.txt");
  const std::string rows = printedBy([&] {
    writeLogLine(log, "one");
    writeLogLine(log, "two___\n");
  });
  EXPECT_EQ(rows, kIndent + "one\nNov 14. 22:13.20: two___\n\n");
  EXPECT_EQ(readFile(log), rows);
}

TEST(WriteLogLine, MakesTheLogsFolderBelowAnExistingGrandparent) {
  const TempFolder folder;
  const FixedString log = folder.file("a/b/log.txt");
  const std::string row = printedBy([&] { writeLogLine(log, "x"); });
  EXPECT_EQ(row, kIndent + "x\n");
  EXPECT_EQ(readFile(log), row);
}

TEST(WriteLogLine, MissingGrandparentIsAnErrorAndTheRowIsStillShown) {
  const TempFolder folder;
  const std::string printed = printedBy([&] { writeLogLine(folder.file("a/b/c/log.txt"), "x"); });
  EXPECT_EQ(printed,
            "ERROR: Folder does not exists: " + folder.path() + "/a/b/c/." + kIndent + "x\n");
  EXPECT_FALSE(exists(folder.file("a")));
}

TEST(WriteLogLine, KeepsWritingALogWithoutFolderAfterTheError) {
  const test::WorkingFolder folder;
  const std::string printed = printedBy([] { writeLogLine("log.txt", "x"); });
  EXPECT_EQ(printed, "ERROR: Folder does not exists: ." + kIndent + "x\n");
  EXPECT_EQ(readFile(folder.file("log.txt")), kIndent + "x\n");
}

TEST(WriteLogLine, FolderThatAnotherClientMakesMeanwhileIsNoError) {
  const TempFolder folder;
  std::filesystem::create_symlink("nowhere", folder.file("new").c_str());
  EXPECT_EQ(printedBy([&] { writeLogLine(folder.file("new/log.txt"), "x"); }), kIndent + "x\n");
}

TEST(WriteLogLine, RowReachesTheConsoleAtOnce) {
  struct stat console {};
  const std::string row = printedBy([&] {
    writeLogLine({}, "x");
    EXPECT_EQ(fstat(STDOUT_FILENO, &console), 0);
  });
  EXPECT_EQ(console.st_size, static_cast<off_t>(row.size()));
}

}  // namespace
}  // namespace marrowbench
