#include "main/settings_loader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "fakes/fake_clock.h"
#include "helpers/printed.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::fakeClock;
using test::writeFile;

constexpr std::int64_t kStart = 1'700'000'000;

// Waits for a file of the folder and returns what is printed meanwhile.
struct Wait {
  explicit Wait(const FixedString& path)
      : printed(test::printedBy([&] { existed = waitForSettingsFile(path); })) {}
  bool existed = false;
  std::string printed;
};

TEST(WaitForSettingsFile, DoesNotWaitForAFileThatIsThere) {
  const test::TempFolder folder;
  writeFile(folder.file("run.bst"), "");
  const Wait wait(folder.file("run.bst"));
  EXPECT_TRUE(wait.existed);
  EXPECT_EQ(wait.printed, "\n");
  EXPECT_EQ(fakeClock().sleeps.size(), 0U);
}

TEST(WaitForSettingsFile, PrintsADotEveryFiveSeconds) {
  const test::TempFolder folder;
  fakeClock().duringSleep = [&] {
    if (fakeClock().seconds() == kStart + 11) writeFile(folder.file("run.bst"), "");
  };
  const Wait wait(folder.file("run.bst"));
  EXPECT_FALSE(wait.existed);
  EXPECT_EQ(wait.printed, "...\n");
  EXPECT_EQ(fakeClock().seconds(), kStart + 15);
}

TEST(WaitForSettingsFile, FolderIsNoSettingsFile) {
  const test::TempFolder folder;
  const FixedString path = folder.file("run.bst");
  std::filesystem::create_directory(path.c_str());
  fakeClock().duringSleep = [&] {
    std::filesystem::remove(path.c_str());
    writeFile(path, "");
  };
  const Wait wait(path);
  EXPECT_FALSE(wait.existed);
  EXPECT_EQ(wait.printed, ".\n");
}

class LoadSettings : public testing::Test {
 protected:
  // Loads a file of the given content; what is printed goes into `printed`.
  void load(std::string_view content, const char* name = "run12.bst") {
    writeFile(folder.file(name), content);
    printed = test::printedBy([&] { loaded = loadSettings(folder.file(name), table); });
  }

  [[nodiscard]] std::string line(std::size_t i) const {
    return std::string(narrowedText<500>(table[i].settingsLine));
  }

  test::TempFolder folder;
  std::vector<TestConfig> table = std::vector<TestConfig>(3);
  LoadedSettings loaded;
  std::string printed;
};

TEST_F(LoadSettings, FillsOneRecordPerTestLine) {
  load("Stream;1\nAnsiC;2\r\n\tPosix;3  ");
  EXPECT_EQ(loaded.count, 3);
  EXPECT_EQ(line(0), "Stream;1");
  EXPECT_EQ(line(1), "AnsiC;2");
  EXPECT_EQ(line(2), "Posix;3");
  for (const TestConfig& config : table) {
    EXPECT_EQ(config.settingsPath, folder.file("run12.bst"));
    EXPECT_EQ(config.settingsFileNumber, 12);
  }
  EXPECT_TRUE(loaded.nextPath.isEmpty());
  EXPECT_EQ(printed, "");
}

TEST_F(LoadSettings, FileOfCommentsAndBlankLinesHasNoTests) {
  using std::string_view_literals::operator""sv;
  load("# a comment\n#Stream;;;\n#next.bst\n\n \t\r\n\0\0 \n"sv);
  EXPECT_EQ(loaded.count, 0);
  EXPECT_TRUE(loaded.nextPath.isEmpty());
  EXPECT_EQ(printed, "");
}

TEST_F(LoadSettings, KeepsTakingAHashAfterBlanksAsPartOfTheLine) {
  load("  # no comment\n");
  EXPECT_EQ(loaded.count, 0);
  EXPECT_EQ(printed, "Error reading settings line '  # no comment' \n");
  load("  # x.bst\n");
  EXPECT_EQ(loaded.nextPath, "# x.bst");
}

TEST_F(LoadSettings, RefusedLineIsPrintedAsReadAndItsSlotIsUsedAgain) {
  load("Stream;1\n \tnonsense;1 \r\nAnsiC;2\nPosix;0;0;x\n");
  EXPECT_EQ(loaded.count, 2);
  EXPECT_EQ(line(1), "AnsiC;2");
  EXPECT_EQ(printed,
            "Error reading settings line ' \tnonsense;1 \r' \n"
            "Error reading settings line 'Posix;0;0;x' \n");
}

TEST_F(LoadSettings, RefusedLineGetsNoNumber) {
  table[0].settingsFileNumber = 77;
  load("nonsense\n");
  EXPECT_EQ(table[0].settingsFileNumber, 77);
}

TEST_F(LoadSettings, NulBytesAreOrdinaryCharacters) {
  using std::string_view_literals::operator""sv;
  load("\0Stream;1\n\0# no comment\nPosix;0;0;1\0002\n"sv);
  EXPECT_EQ(loaded.count, 1);
  EXPECT_EQ(printed,
            "Error reading settings line '' \n"
            "Error reading settings line 'Posix;0;0;1' \n");
}

TEST_F(LoadSettings, LineIsCutAt1000CharactersBeforeItIsTrimmed) {
  load("Stream;" + std::string(1000, 'x') + ".bst\n" + std::string(1000, ' ') + "nonsense\n" +
       std::string(992, ' ') + "Stream;1.bst\n");
  EXPECT_EQ(loaded.count, 2);
  EXPECT_EQ(table[0].settingsLine.length(), 1000U);
  EXPECT_EQ(line(1), "Stream;1");
  EXPECT_EQ(printed, "");
}

TEST_F(LoadSettings, KeepsCountingTheBytesOfALineIn16Bits) {
  load("Stream;1" + std::string(65536, 'x') + "\n#" + std::string(65535, 'x') + "\n");
  EXPECT_EQ(loaded.count, 1);
  EXPECT_EQ(line(0), "Stream;1");
  EXPECT_EQ(printed, "");
}

TEST_F(LoadSettings, ChainLineEndsTheReading) {
  load("Stream;1\nnext\\set2.bst\nAnsiC;2\nnonsense\nother.bst\n");
  EXPECT_EQ(loaded.count, 1);
  EXPECT_EQ(loaded.nextPath, "next/set2.bst");
  EXPECT_TRUE(table[1].chainToNext);
  EXPECT_EQ(table[1].settingsFileNumber, 12);
  EXPECT_EQ(printed, "");
}

TEST_F(LoadSettings, KeepsTheOldNumberOfTheSlotInAChainPath) {
  load("next[cfgID].bst\n");
  EXPECT_EQ(loaded.nextPath, "next0.bst");
  load("next[cfgID].bst\n", "run13.bst");
  EXPECT_EQ(loaded.nextPath, "next12.bst");
}

TEST_F(LoadSettings, KeepsRecordsOfTheFileBefore) {
  load("Stream;1\nAnsiC;2\n");
  table[0].interfaces[0].name = "en0";
  load("Posix;3\n", "run13.bst");
  EXPECT_EQ(loaded.count, 1);
  EXPECT_EQ(line(0), "Posix;3");
  EXPECT_EQ(table[0].settingsFileNumber, 13);
  EXPECT_EQ(table[0].interfaces[0].name, "en0");
  EXPECT_EQ(line(1), "AnsiC;2");
  EXPECT_EQ(table[1].settingsFileNumber, 12);
}

TEST_F(LoadSettings, TestWithoutRoomIsRefusedAndTheReadingGoesOn) {
  const std::string path(folder.file("run12.bst"));
  load("Stream;1\n# comment\nStream;2\nStream;3\nStream;4\nnonsense\nStream;5\nnext.bst\n");
  EXPECT_EQ(loaded.count, 3);
  EXPECT_EQ(line(2), "Stream;3");
  EXPECT_EQ(loaded.nextPath, "next.bst");
  EXPECT_EQ(printed, "Error reading settings file '" + path +
                         "', line 5: more than 3 tests, line ignored.\n"
                         "Error reading settings line 'nonsense' \n"
                         "Error reading settings file '" +
                         path + "', line 7: more than 3 tests, line ignored.\n");
}

TEST_F(LoadSettings, FileThatCannotBeOpenedHasNoLines) {
  loaded.count = 7;
  printed = test::printedBy([&] { loaded = loadSettings(folder.file("none.bst"), table); });
  EXPECT_EQ(loaded.count, 0);
  EXPECT_TRUE(loaded.nextPath.isEmpty());
  EXPECT_EQ(printed, "");
}

}  // namespace
}  // namespace marrowbench
