#include <gtest/gtest.h>

#include <cstdint>
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

TEST(AlikeLines, AreToldApartByTheirOrderInATableThatWasRenamed) {
  MadeTables tables;
  tables.settings(linesTo({"/z.csv", "/a.csv"}));
  tables.add("all.csv", together({client(0, 3, kData), client(20, 3, kData)}));
  EXPECT_EQ(rowsOfTests(tables), (std::vector<int>{3, 3}));
}

}  // namespace
}  // namespace marrowbench::ctl
