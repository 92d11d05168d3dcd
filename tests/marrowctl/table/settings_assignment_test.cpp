#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "marrowctl/table/made_tables.h"

namespace marrowbench::ctl {
namespace {

using namespace test;

// Lines of one file that write alike rows, each to a table.
std::string linesTo(const std::vector<std::string>& tables, const std::string& method = "posix") {
  std::string text;
  for (const std::string& table : tables)
    text += method + ";0;0;0;64;0;1024;3;0;MEMORY;/d/[host]_[iter].bin;;" + table + "\n";
  return text;
}

// How many rows each test has.
std::vector<int> rowsOfTests(MadeTables& tables) {
  tables.outcome = readResults(tables.options);
  std::vector<int> counts(tables.outcome.set.tests.size());
  for (RowCursor rows(tables.outcome.set); rows.next();) ++counts[rows.row().test];
  return counts;
}

std::vector<WrittenRow> with(const std::string& method, std::vector<WrittenRow> rows) {
  for (WrittenRow& row : rows) row.method = method;
  return rows;
}

constexpr const char* kData = "/d/c1_%.bin";

TEST(SettingsAssignment, FollowsClientsFromTableToTable) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic") +
                  linesTo({"/z.csv"}, "stream"));
  tables.add("a.csv", with("AnsiC", client(10, 3, kData)));
  tables.add("z.csv", together({client(0, 3, kData), with("Stream", client(20, 3, kData))}));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 3, 3}));
  EXPECT_EQ(tables.outcome.set.runs.found, 1);
}

TEST(SettingsAssignment, ClientsWithOtherClocksDoNotDisturb) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic"));
  // The second client's clock is ten minutes ahead.
  tables.add("z.csv", {{601, 1, "/d/c2_0.bin"}, {0, 1, "/d/c1_0.bin"}});
  tables.add("a.csv", with("AnsiC", {{11, 1, "/d/c1_0.bin"}, {611, 1, "/d/c2_0.bin"}}));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{2, 2}));
  EXPECT_EQ(tables.outcome.set.runs.found, 1);
}

TEST(SettingsAssignment, OfOneSecondTheRowOfTheEarlierLineComesFirst) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic"));
  tables.add("a.csv", with("AnsiC", {{0, 1, "/d/c1_0.bin"}}));
  tables.add("z.csv", {{0, 1, "/d/c1_0.bin"}});
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{1, 1}));
  EXPECT_EQ(tables.outcome.set.runs.found, 1);
}

TEST(SettingsAssignment, OfOneSecondTheRowOfTheRunThatEndsComesFirst) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic"));
  tables.add("z.csv", {{0, 1, "/d/c1_0.bin"}, {4, 1, "/d/c1_0.bin"}});
  tables.add("a.csv", with("AnsiC", {{2, 3, "/d/c1_0.bin"}, {7, 1, "/d/c1_0.bin"}}));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{1, 1}));
  EXPECT_EQ(tables.outcome.set.runs.found, 2);
}

TEST(SettingsAssignment, OfOneSecondTheOrderOfTheSettingsCountsWhereRowsAreLost) {
  // The later run has lost its first row: taken as the settings have it, there are two runs as
  // well.
  MadeTables tables;
  tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic"));
  tables.add("a.csv", with("AnsiC", {{4, 1, "/d/c1_0.bin"}, {99, 1, "/d/c1_0.bin"}}));
  tables.add("z.csv", {{4, 1, "/d/c1_0.bin"}});
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{0, 1}));
  EXPECT_EQ(tables.outcome.set.runs.found, 2);
}

TEST(SettingsAssignment, OfOneSecondTheRowOfTheEarlierIterationComesFirst) {
  MadeTables tables;
  tables.settings(linesTo({"/t_[iter].csv"}));
  for (const char* const iteration : {"2", "0", "1"})
    tables.add(std::string("t_") + iteration + ".csv",
               {{0, 0.1, std::string("/d/c1_") + iteration + ".bin"}});
  EXPECT_EQ(rowsOfTests(tables), std::vector<int>{3});
  EXPECT_EQ(tables.outcome.set.runs.found, 1);
}

TEST(SettingsAssignment, AClockThatWasSetBetweenTwoTablesMakesNoRun) {
  for (const bool isLaterTableFirst : {false, true}) {
    MadeTables tables;
    tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic"));
    if (!isLaterTableFirst) tables.add("z.csv", client(100, 3, kData));
    tables.add("a.csv", with("AnsiC", client(0, 3, kData)));
    if (isLaterTableFirst) tables.add("z.csv", client(100, 3, kData));
    EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 3}));
    EXPECT_EQ(tables.outcome.set.runs.found, 1);
  }
}

TEST(SettingsAssignment, TwoProgramsOfAClientAtATimeMakeNoRun) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic"));
  tables.add("a.csv", with("AnsiC", client(0, 3, kData)));
  tables.add("z.csv", client(0, 3, kData));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 3}));
  EXPECT_EQ(tables.outcome.set.runs.found, 1);
}

TEST(SettingsAssignment, ACopyOfATableIsAnotherRun) {
  MadeTables tables;
  tables.settings(linesTo({"/t.csv"}));
  tables.add("t.csv", client(0, 3, kData));
  tables.add("t_copy.csv", client(0, 3, kData));
  EXPECT_EQ(rowsOfTests(tables), std::vector<int>{3});
  EXPECT_EQ(tables.outcome.set.runs.found, 2);
}

TEST(SettingsAssignment, ALostTestIsNotTakenFromALaterRun) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv"}) + linesTo({"/a.csv"}, "ansic") +
                  linesTo({"/z.csv"}, "stream"));
  const auto run = [](double start) {
    return together({client(start, 3, kData), with("Stream", client(start + 20, 3, kData))});
  };
  tables.add("z.csv", together({run(0), run(100)}));
  tables.add("a.csv", with("AnsiC", client(110, 3, kData)));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 3, 3}));
  EXPECT_EQ(tables.outcome.set.runs.found, 2);
}

TEST(SettingsAssignment, TellsLinesApartByTheirIterations) {
  MadeTables tables;
  const std::string line = linesTo({"/t.csv"});
  tables.settings(line + "posix;0;0;0;64;0;1024;1;0;MEMORY;/d/[host]_[iter].bin;;/t.csv\n");
  tables.add("t.csv", together({client(0, 3, kData), client(10, 1, kData)}));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 1}));
  EXPECT_EQ(tables.outcome.set.runs.found, 1);
}

TEST(SettingsAssignment, AClientWithFewerRunsTookPartInTheOneAtItsTime) {
  // One made a trial on the day before, and is five minutes late.
  constexpr double kDay = 86400;
  for (const double late : {-300, 0, 300}) {
    MadeTables tables;
    tables.settings(linesTo({"/t.csv"}));
    tables.add("t.csv",
               together({client(0, 3, kData), client(kDay + late, 3, kData),
                         client(kDay, 3, "/d/c2_%.bin"), client(kDay + 1, 3, "/d/c3_%.bin")}));
    EXPECT_EQ(rowsOfTests(tables), std::vector<int>{9}) << late;
    EXPECT_EQ(tables.outcome.set.runs.found, 2);
  }
}

TEST(SettingsAssignment, KnowsADateBehindANameThatEndsInADigit) {
  MadeTables tables;
  tables.settings("posix;0;0;0;64;0;1024;3;0;MEMORY;/d/[host][date].bin;;/t.csv\n");
  tables.add("t.csv", {{0, 1, "/d/c11116_02000.bin"}, {1, 1, "/d/c11116_02001.bin"}});
  EXPECT_EQ(rowsOfTests(tables), std::vector<int>{2});
  EXPECT_EQ(tables.outcome.set.hosts, std::vector<std::string>{"c1"});
}

TEST(AlikeLines, AreToldApartByTheNamesOfTheirTables) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv", "/a.csv", "/z.csv"}));
  // Of the second one no row is there.
  tables.add("z.csv", together({client(0, 3, kData), client(20, 3, kData)}));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 0, 3}));
}

TEST(AlikeLines, AreToldApartByTheFoldersOfTheirTables) {
  MadeTables tables;
  const std::string& here = tables.folder.path();
  tables.settings(linesTo({"/elsewhere/t.csv", here + "/t.csv"}));
  tables.add("t.csv", client(0, 3, kData));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{0, 3}));
}

TEST(AlikeLines, AreToldApartByTablesOfAShareThatIsMountedElsewhere) {
  MadeTables tables;
  std::filesystem::create_directory(tables.folder.path() + "/two");
  tables.settings(linesTo({"/share/one/t.csv", "/share/two/t.csv"}));
  tables.add("two/t.csv", client(0, 3, kData));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{0, 3}));
}

TEST(AlikeLines, BelongToTheTableWithTheLongestTemplate) {
  MadeTables tables;
  tables.settings(linesTo({"/[host].csv", "/[host]_again.csv"}));
  tables.add("c1_again.csv", client(0, 3, kData));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{0, 3}));
}

TEST(AlikeLines, AreToldApartByTheirOrderInATableThatWasRenamed) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv", "/a.csv"}));
  tables.add("all.csv", together({client(0, 3, kData), client(20, 3, kData)}));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 3}));
}

}  // namespace
}  // namespace marrowbench::ctl
