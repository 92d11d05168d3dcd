#include "marrowctl/plan/totals.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "helpers/temp_folder.h"
#include "marrowctl/plan/make_plan.h"

namespace marrowbench::ctl {
namespace {

using test::writeFile;

constexpr std::int64_t kKiB = 1024;
constexpr std::int64_t kGiB = 1073741824;
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

class TotalsOf : public testing::Test {
 protected:
  Totals totals(const std::string& content) {
    writeFile("a.bst", content);
    std::istringstream none;
    return totalsOf(makePlan({{"a.bst"}, hosts, clients}, none));
  }

  test::WorkingFolder folder;
  std::vector<std::string> hosts = {"c1"};
  std::int64_t clients = 0;
};

TEST_F(TotalsOf, WriteCountsItsSizeForEachIterationAndClient) {
  hosts = {"c1", "c2"};
  const Totals sums = totals("Posix;0;0;0;64;0;100;3;0;MEMORY;d/[host];;t.csv\n");
  EXPECT_EQ(sums.clients, 2);
  EXPECT_EQ(sums.rowsPerClient, 3);
  EXPECT_EQ(sums.rows, 6);
  EXPECT_EQ(sums.bytesWritten, 6 * 100 * kKiB);
  EXPECT_EQ(sums.bytesRead, 0);
  EXPECT_EQ(sums.memoryBytes, 100 * kKiB);
  EXPECT_EQ(sums.filesLeft, 2);
  EXPECT_EQ(sums.pauseMs, 0);
  EXPECT_EQ(sums.spaceByFolder, (std::map<std::string, std::int64_t>{{"d/", 2 * 100 * kKiB}}));
}

TEST_F(TotalsOf, RowsAreThoseOfLinesWithATable) {
  EXPECT_EQ(totals("Posix;0;0;0;64;0;1;3;0;MEMORY;a;l; ;\n").rowsPerClient, 0);
  EXPECT_EQ(totals("System;0;0;0;64;0;1;3;0;MEMORY;a;;t\n"
                   "Posix;0;0;0;64;0;1;-3;0;MEMORY;a;;t\n")
                .rowsPerClient,
            3);
}

TEST_F(TotalsOf, MethodSystemAndNoIterationsMoveNothing) {
  const Totals sums = totals(
      "System;0;0;5;64;0;1;3;0;MEMORY;a\nPosix;0;0;5;64;0;1;0;0;MEMORY;b\n"
      "Posix;0;0;5;64;0;1;-2;0;c;MEMORY\n");
  EXPECT_EQ(sums.bytesWritten, 0);
  EXPECT_EQ(sums.filesLeft, 0);
  EXPECT_EQ(sums.pauseMs, 0);
  EXPECT_TRUE(sums.unknownSizes.empty());
}

TEST_F(TotalsOf, TestsWithoutRoomInTheTableDoNotCount) {
  std::string content;
  for (int i = 0; i < 201; ++i) content += "Posix;0;0;1000;1;0;1;1;0;MEMORY;d/[cfgline];;t\n";
  const Totals sums = totals(content);
  EXPECT_EQ(sums.rowsPerClient, 200);
  EXPECT_EQ(sums.filesLeft, 200);
  EXPECT_EQ(sums.pauseSeconds, 200);
}

TEST_F(TotalsOf, CopyHasTheSizeThatAnEarlierLineWrote) {
  const Totals sums = totals(
      "Posix;0;0;0;64;0;10;2;0;MEMORY;d/x\nPosix;0;0;0;64;0;0;3;0;d/x;d/y\n"
      "Posix;0;0;0;64;0;0;1;0;d/y;MEMORY\n");
  EXPECT_EQ(sums.bytesWritten, (2 + 3) * 10 * kKiB);
  EXPECT_EQ(sums.bytesRead, (3 + 1) * 10 * kKiB);
  EXPECT_EQ(sums.filesLeft, 2);
  EXPECT_EQ(sums.memoryBytes, 10 * kKiB);
}

TEST_F(TotalsOf, LaterLinesAndThoseOfTheSameLineAreNotRead) {
  hosts = {"c1", "c2"};
  const Totals sums = totals(
      "Posix;0;0;0;64;0;0;1;0;d/x;MEMORY\nPosix;0;0;0;64;0;10;1;0;MEMORY;d/x\n"
      "Posix;0;0;0;64;0;0;1;0;d/y_c1;d/y_[host]\n");
  EXPECT_EQ(sums.unknownSizes, (std::vector<int>{0, 2}));
  EXPECT_EQ(sums.bytesRead, 0);
  EXPECT_EQ(sums.filesLeft, 3);
}

TEST_F(TotalsOf, WhatAnotherClientCopiesByTheSameLineIsNotKnown) {
  hosts = {"c", "c2"};
  const Totals sums = totals(
      "Posix;0;0;0;64;0;10;1;0;MEMORY;d/c\n"
      "Posix;0;0;0;64;0;0;1;0;d/[host];d/[host]2\n");
  EXPECT_EQ(sums.bytesRead, 10 * kKiB);
  EXPECT_EQ(sums.unknownSizes, std::vector<int>{1});
}

TEST_F(TotalsOf, BehindAThousandFilesTheSizeOfTheLastStandsForTheRest) {
  for (int i = 0; i < 1000; ++i) writeFile(("x" + std::to_string(i)).c_str(), "abc");
  EXPECT_EQ(totals("Posix;0;0;0;64;0;0;5000;0;x[iter];MEMORY\n").bytesRead, 15000);
  std::filesystem::remove("x999");
  const Totals sums = totals("Posix;0;0;0;64;0;0;5000;0;x[iter];MEMORY\n");
  EXPECT_EQ(sums.bytesRead, 999 * 3);
  EXPECT_EQ(sums.unknownSizes, std::vector<int>{0});
}

TEST_F(TotalsOf, OtherClientsFilesOfEarlierLinesAreKnown) {
  hosts = {"c1", "c2"};
  const Totals sums = totals(
      "Posix;0;0;0;64;0;10;1;0;MEMORY;d/[host]\n"
      "Posix;0;0;0;64;0;0;1;0;d/c2;MEMORY\n");
  EXPECT_EQ(sums.bytesRead, 2 * 10 * kKiB);
}

TEST_F(TotalsOf, SourceThatExistsHereIsKnown) {
  writeFile("here", std::string(1000, 'x'));
  const Totals sums = totals(
      "Posix;0;0;0;64;0;0;2;0;here;MEMORY\nPosix;0;0;0;64;0;0;1;0;none;MEMORY\n"
      "Posix;0;0;0;64;0;0;1;0;here;copy\n");
  EXPECT_EQ(sums.bytesRead, 3000);
  EXPECT_EQ(sums.bytesWritten, 1000);
  EXPECT_EQ(sums.unknownSizes, std::vector<int>{1});
}

TEST_F(TotalsOf, ReadTakesTheLowHalfOfASizeUpTo1GiBACopyAllOfIt) {
  const struct {
    std::int64_t size;
    std::int64_t read;
  } cases[] = {{kGiB + 1, kGiB}, {2 * kGiB, 0}, {4 * kGiB + 5, 5}};
  for (const auto& c : cases) {
    writeFile("here", "");
    std::filesystem::resize_file("here", static_cast<std::uintmax_t>(c.size));
    const Totals sums = totals("Posix;0;0;0;64;0;0;1;0;here;MEMORY\n");
    EXPECT_EQ(sums.bytesRead, c.read) << c.size;
    EXPECT_EQ(sums.memoryBytes, c.read) << c.size;
    EXPECT_EQ(totals("Posix;0;0;0;64;0;0;1;0;here;copy\n").bytesRead, c.size);
  }
}

TEST_F(TotalsOf, PauseFollowsEveryChunkTheLastToo) {
  const struct {
    const char* line;
    std::int64_t ms;
  } cases[] = {{"Posix;0;0;7;4;0;12;2;0;MEMORY;x", 2 * 3 * 7},
               {"Posix;0;0;7;4;0;13;1;0;MEMORY;x", 4 * 7},
               {"Posix;0;0;7;4;0;0;1;0;MEMORY;x", 7},
               {"Posix;0;0;7;4;0;-5;1;0;MEMORY;x", 7},
               {"Posix;0;0;7;0;0;12;1;0;MEMORY;x", 0},
               {"Posix;0;0;7;-4;0;12;1;0;MEMORY;x", 0},
               {"Posix;0;0;-7;4;0;12;1;0;MEMORY;x", 0},
               {"Posix;0;0;7;1;0;0;1;0;here;MEMORY", 2 * 7},
               {"Posix;0;0;7;0;0;0;1;0;here;x", 7},
               {"Posix;0;0;7;1;0;0;1;0;empty;x", 0},
               {"Posix;0;0;7;1;0;0;1;0;empty;MEMORY", 7}};
  writeFile("here", std::string(1025, 'x'));
  writeFile("empty", "");
  for (const auto& c : cases) EXPECT_EQ(totals(c.line).pauseMs, c.ms) << c.line;
}

TEST_F(TotalsOf, PauseIsThatOfOneClientInSecondsRoundedUp) {
  hosts = {"c1", "c2"};
  EXPECT_EQ(totals("Posix;0;0;500;4;0;12;1;0;MEMORY;x\n").pauseMs, 1500);
  EXPECT_EQ(totals("Posix;0;0;500;4;0;12;1;0;MEMORY;x\n").pauseSeconds, 2);
  EXPECT_EQ(totals("Posix;0;0;500;4;0;16;1;0;MEMORY;x\n").pauseSeconds, 2);
}

TEST_F(TotalsOf, MemoryIsTheLargestBufferOfAMemoryTest) {
  writeFile("here", std::string(5000, 'x'));
  EXPECT_EQ(totals("Posix;0;0;0;64;0;2;1;0;MEMORY;x\nPosix;0;0;0;64;0;4;1;0;MEMORY;x\n"
                   "Posix;0;0;0;64;0;3;1;0;MEMORY;x\nPosix;0;0;0;64;0;0;1;0;here;x\n")
                .memoryBytes,
            4 * kKiB);
}

TEST_F(TotalsOf, IterationsLeaveFilesWhereThePathHoldsTheirNumber) {
  EXPECT_EQ(totals("Posix;0;0;0;64;0;1;5;0;MEMORY;d/x\n").filesLeft, 1);
  EXPECT_EQ(totals("Posix;0;0;0;64;0;1;5;0;MEMORY;d/[iter]\n").filesLeft, 5);
  EXPECT_EQ(totals("Posix;0;0;0;64;0;1;5;0;MEMORY;d/[iter]\n"
                   "Posix;0;0;0;64;0;1;7;0;MEMORY;d/[ITER]\n")
                .filesLeft,
            7);
  EXPECT_EQ(totals("Posix;0;0;0;64;0;1;5;0;MEMORY;d/x[iter]\nPosix;0;0;0;64;0;1;1;0;MEMORY;d/x4\n"
                   "Posix;0;0;0;64;0;1;1;0;MEMORY;d/x5\nPosix;0;0;0;64;0;1;1;0;MEMORY;d/x04\n")
                .filesLeft,
            7);
}

TEST_F(TotalsOf, BillionsOfIterationsAreNotGoneThrough) {
  const Totals sums = totals(
      "Posix;0;0;0;64;0;1;2147483647;0;MEMORY;d/[iter]\n"
      "Posix;0;0;0;64;0;0;2147483647;0;d/[iter];MEMORY\n"
      "Posix;0;0;0;64;0;0;2147483647;0;e/[iter];MEMORY\n");
  EXPECT_EQ(sums.filesLeft, 2147483647);
  EXPECT_EQ(sums.bytesRead, 2147483647 * kKiB);
  EXPECT_EQ(sums.unknownSizes, std::vector<int>{2});
}

TEST_F(TotalsOf, SumsStayAtTheMostThat64BitsHold) {
  clients = 1000;
  const std::string line =
      "Posix;0;0;2147483647;1;0;1048576;2147483647;0;MEMORY;d/[host][iter];;t\n";
  const Totals sums = totals(line + line + line + line + line);
  EXPECT_EQ(sums.bytesWritten, kMost);
  EXPECT_EQ(sums.pauseMs, kMost);
  EXPECT_EQ(sums.rowsPerClient, 5 * 2147483647LL);
  EXPECT_EQ(sums.rows, 1000 * 5 * 2147483647LL);
}

TEST_F(TotalsOf, IterationsReadWhatThoseBeforeThemWrote) {
  // The first three are written again, larger.
  const std::string written =
      "Posix;0;0;0;64;0;1;5;0;MEMORY;d/[iter]\nPosix;0;0;0;64;0;10;3;0;MEMORY;d/[iter]\n";
  EXPECT_EQ(totals(written + "Posix;0;0;0;64;0;0;5;0;d/[iter];MEMORY\n").bytesRead, 32 * kKiB);
  EXPECT_EQ(totals(written + "Posix;0;0;0;64;0;0;2;0;d/[iter];MEMORY\n").bytesRead, 20 * kKiB);
  EXPECT_EQ(totals(written + "Posix;0;0;0;64;0;0;4;0;d/3;MEMORY\n").bytesRead, 4 * kKiB);
  const Totals more = totals(written + "Posix;0;0;0;64;0;0;6;0;d/[iter];MEMORY\n");
  EXPECT_EQ(more.bytesRead, 32 * kKiB);
  EXPECT_EQ(more.unknownSizes, std::vector<int>{2});
  EXPECT_EQ(more.spaceByFolder.at("d/"), 32 * kKiB);
}

TEST_F(TotalsOf, SingleFilesAreReadByAPathWithTheirNumber) {
  writeFile("x2", std::string(7, 'x'));
  EXPECT_EQ(totals("Posix;0;0;0;64;0;1;1;0;MEMORY;x0\nPosix;0;0;0;64;0;2;1;0;MEMORY;x1\n"
                   "Posix;0;0;0;64;0;0;3;0;x[iter];MEMORY\n")
                .bytesRead,
            3 * kKiB + 7);
}

TEST_F(TotalsOf, DescriptorsKeepTheEndOfALongerFile) {
  const std::string first = "Posix;0;0;0;64;0;10;1;0;MEMORY;d/x\n";
  const std::string read = "Posix;0;0;0;64;0;0;1;0;d/x;MEMORY\n";
  const struct {
    const char* write;
    std::int64_t left;
  } cases[] = {
      {"Posix;0;0;0;64;0;3;1;0;MEMORY;d/x\n", 10}, {"Posix;0;0;0;64;0;30;1;0;MEMORY;d/x\n", 30},
      {"Posix;0;1;0;64;0;3;1;0;MEMORY;d/x\n", 3},  {"Stream;0;0;0;64;0;3;1;0;MEMORY;d/x\n", 3},
      {"Posix;0;0;0;64;0;0;1;0;here;d/x\n", 10},   {"Stream;0;0;0;64;0;0;1;0;here;d/x\n", 2}};
  writeFile("here", std::string(2 * kKiB, 'x'));
  for (const auto& c : cases) {
    const std::int64_t before = totals(first + c.write).bytesRead;
    EXPECT_EQ(totals(first + c.write + read).bytesRead - before, c.left * kKiB) << c.write;
  }
  writeFile("old", std::string(2 * kKiB, 'x'));
  EXPECT_EQ(
      totals("Posix;0;0;0;64;0;1;1;0;MEMORY;old\nPosix;0;0;0;64;0;0;1;0;old;MEMORY\n").bytesRead,
      2 * kKiB);
}

TEST_F(TotalsOf, DescriptorsKeepTheEndsOfIterations) {
  const std::string lines =
      "Stream;0;0;0;64;0;5;2;0;MEMORY;a[iter]\nPosix;0;0;0;64;0;1;4;0;MEMORY;a[iter]\n";
  EXPECT_EQ(totals(lines + "Posix;0;0;0;64;0;0;4;0;a[iter];MEMORY\n").bytesRead, 12 * kKiB);
  EXPECT_EQ(totals("Stream;0;0;0;64;0;9;1;0;MEMORY;a2\n" + lines +
                   "Posix;0;0;0;64;0;0;4;0;a[iter];MEMORY\n")
                .bytesRead,
            20 * kKiB);
}

TEST_F(TotalsOf, FileOfAFamilyHasTheSizeWrittenLast) {
  const std::string family = "Stream;0;0;0;64;0;1;3;0;MEMORY;a[iter]\n";
  const std::string single = "Stream;0;0;0;64;0;7;1;0;MEMORY;a1\n";
  const std::string readAll = "Posix;0;0;0;64;0;0;3;0;a[iter];MEMORY\n";
  const std::string readOne = "Posix;0;0;0;64;0;0;1;0;a1;MEMORY\n";
  EXPECT_EQ(totals(family + single + readAll).bytesRead, 9 * kKiB);
  EXPECT_EQ(totals(family + single + readOne).bytesRead, 7 * kKiB);
  EXPECT_EQ(totals(single + family + readAll).bytesRead, 3 * kKiB);
  EXPECT_EQ(totals(single + family + readOne).bytesRead, 1 * kKiB);
}

TEST_F(TotalsOf, FilesAreTheSameInEverySpelling) {
  const std::string here = std::filesystem::current_path().string();
  const Totals sums = totals("Stream;0;0;0;64;0;1;1;0;MEMORY;d/x\nStream;0;0;0;64;0;2;1;0;MEMORY;" +
                             here + "/./d/x\nPosix;0;0;0;64;0;0;1;0;./d//x;MEMORY\n");
  EXPECT_EQ(sums.filesLeft, 1);
  EXPECT_EQ(sums.bytesRead, 2 * kKiB);
  EXPECT_EQ(sums.spaceByFolder, (std::map<std::string, std::int64_t>{{"d/", 2 * kKiB}}));
}

TEST_F(TotalsOf, CopyOfAnEmptyFileLeavesNone) {
  writeFile("empty", "");
  EXPECT_EQ(totals("Posix;0;0;0;64;0;0;1;0;empty;copy\n").filesLeft, 0);
}

TEST_F(TotalsOf, CopiesOfIterationsKeepTheirSizes) {
  const std::string lines =
      "Posix;0;0;0;64;0;1;2;0;MEMORY;a[iter]\nPosix;0;0;0;64;0;3;1;0;MEMORY;a[iter]\n";
  EXPECT_EQ(
      totals(lines + "Posix;0;0;0;64;0;0;2;0;a[iter];b[iter]\nPosix;0;0;0;64;0;0;1;0;b1;MEMORY\n")
          .bytesRead,
      5 * kKiB);
  const std::string read = "Posix;0;0;0;64;0;0;1;0;b;MEMORY\n";
  EXPECT_EQ(totals(lines + "Stream;0;0;0;64;0;0;2;0;a[iter];b\n" + read).bytesRead, 5 * kKiB);
  // The second copy leaves the end of the first one.
  EXPECT_EQ(totals(lines + "Posix;0;0;0;64;0;0;2;0;a[iter];b\n" + read).bytesRead, 7 * kKiB);
}

TEST_F(TotalsOf, MoreClientsThanHostsMultiplyWhatEachHostHas) {
  hosts = {"c1", "c2"};
  clients = 10;
  const Totals sums =
      totals("Posix;0;0;0;64;0;1;3;0;MEMORY;d/[host];;t\nPosix;0;0;0;64;0;1;1;0;MEMORY;e/x;;t\n");
  EXPECT_EQ(sums.clients, 10);
  EXPECT_EQ(sums.rows, 40);
  EXPECT_EQ(sums.bytesWritten, 40 * kKiB);
  EXPECT_EQ(sums.filesLeft, 11);
  EXPECT_EQ(sums.spaceByFolder,
            (std::map<std::string, std::int64_t>{{"d/", 10 * kKiB}, {"e/", kKiB}}));
}

TEST_F(TotalsOf, SourcesWithTheDateAreNotKnown) {
  const Totals sums =
      totals("Posix;0;0;0;64;0;10;1;0;MEMORY;d/[date]\nPosix;0;0;0;64;0;0;1;0;d/[date];MEMORY\n");
  EXPECT_EQ(sums.bytesWritten, 10 * kKiB);
  EXPECT_EQ(sums.bytesRead, 0);
  EXPECT_EQ(sums.unknownSizes, std::vector<int>{1});
}

TEST_F(TotalsOf, EachTestMovesWhatTheFirstClientDoes) {
  hosts = {"c1", "c2"};
  writeFile("c1", "abc");
  const Totals sums = totals(
      "Posix;0;0;0;64;0;10;3;0;MEMORY;d/[host]\nPosix;0;0;0;64;0;0;2;0;d/[host];e\n"
      "Posix;0;0;0;64;0;0;2;0;[host];MEMORY\nPosix;0;0;0;64;0;0;2;0;none;MEMORY\n"
      "System;0;0;0;64;0;10;3;0;MEMORY;d/[host]\n");
  EXPECT_EQ(sums.movedByTest,
            (std::vector<std::int64_t>{30 * kKiB, 20 * kKiB, 6, kUnknownSize, 0}));
}

TEST_F(TotalsOf, EachTestPausesAsTheFirstClientDoes) {
  hosts = {"c1", "c2"};
  const Totals sums = totals(
      "Posix;0;0;5;1;0;2;3;0;MEMORY;d/[host]\nSystem;0;0;5;1;0;2;3;0;MEMORY;e\n"
      "Posix;0;0;7;1;0;0;2;0;d/[host];MEMORY\n");
  EXPECT_EQ(sums.pauseMsByTest, (std::vector<std::int64_t>{30, 0, 28}));
}

TEST_F(TotalsOf, OfFilesPartlyKnownNoSumIsMoved) {
  writeFile("x0", "abc");
  writeFile("x2", "abc");
  const Totals sums = totals("Posix;0;0;0;64;0;0;3;0;x[iter];MEMORY\n");
  EXPECT_EQ(sums.movedByTest, std::vector<std::int64_t>{kUnknownSize});
  EXPECT_EQ(sums.bytesRead, 6);
}

TEST_F(TotalsOf, AChainThatLeadsBackIsCountedForOnePass) {
  writeFile("b.bst", "Posix;0;0;0;64;0;10;1;0;MEMORY;e;;t\na.bst\n");
  const Totals sums = totals("Posix;0;0;0;64;0;10;3;0;MEMORY;d;;t\nb.bst\n");
  EXPECT_EQ(sums.rows, 4);
  EXPECT_EQ(sums.bytesWritten, 40 * kKiB);
}

TEST_F(TotalsOf, FilesThatAreHereTakeNoNewSpace) {
  writeFile("x", "");
  writeFile("old0", "");
  writeFile("old1", "");
  const Totals sums = totals("Posix;0;0;0;64;0;2;5;0;MEMORY;old[iter]\n");
  EXPECT_EQ(sums.spaceByFolder, (std::map<std::string, std::int64_t>{{"", 3 * 2 * kKiB}}));
  EXPECT_EQ(totals("Posix;0;0;0;64;0;1;1;0;MEMORY;x\n").spaceByFolder.size(), 0U);
}

TEST_F(TotalsOf, MarkersAreThoseOfFilesThatAskOrHaveNoTest) {
  hosts = {"c1.site", "c2"};
  const std::vector<std::string> both = {"_a_log/done__c1", "_a_log/done__c2"};
  const std::string asks = "Posix;0;0;0;0;0;0;0;0;;;;;true\n";
  EXPECT_EQ(totals("").markers, both);
  EXPECT_EQ(totals("nonsense\nx;y").markers, both);
  EXPECT_EQ(totals("Posix\n" + asks + "Posix\n").markers, both);
  EXPECT_TRUE(totals("Posix\n").markers.empty());
  std::string full;
  for (int i = 0; i < 200; ++i) full += "Posix\n";
  EXPECT_TRUE(totals(full + asks).markers.empty());
  EXPECT_EQ(totals("none.bst\n").markers, both);
}

TEST_F(TotalsOf, MarkersAreNotLeftInFoldersThatTheProgramDoesNotKnow) {
  const auto markersOf = [this](const std::string& path) {
    writeFile(path.c_str(), "");
    std::istringstream none;
    return totalsOf(makePlan({{path}, hosts, 0}, none)).markers;
  };
  for (const char* name : {"d", "ab", "abc"}) std::filesystem::create_directory(name);
  EXPECT_EQ(markersOf("./a.bst"), std::vector<std::string>{});
  EXPECT_EQ(markersOf("d/a.bst"), std::vector<std::string>{});
  EXPECT_EQ(markersOf("ab/a.bst"), std::vector<std::string>{});
  EXPECT_EQ(markersOf("abc/a.bst"), std::vector<std::string>{"abc/_a_log/done__c1"});
  EXPECT_EQ(markersOf("a.bst"), std::vector<std::string>{"_a_log/done__c1"});
  std::filesystem::create_directory("ab/_a_log");
  EXPECT_EQ(markersOf("ab/a.bst"), std::vector<std::string>{"ab/_a_log/done__c1"});
}

TEST_F(TotalsOf, PlanWithoutHostsOrFilesComesToNothing) { EXPECT_EQ(totalsOf(Plan{}).rows, 0); }

}  // namespace
}  // namespace marrowbench::ctl
