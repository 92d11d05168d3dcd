#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "marrowctl/report/make_report.h"
#include "marrowctl/table/made_tables.h"

namespace marrowbench::ctl {
namespace {

using namespace test;
using testing::Test;

constexpr const char* kLine = "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/[host]_[iter].bin;;/t.csv\n";

// Two rows of three.
std::vector<WrittenRow> stopped(double start, const std::string& dest) {
  std::vector<WrittenRow> rows = client(start, 3, dest);
  rows.pop_back();
  return rows;
}

class Verdicts : public Test {
 protected:
  // What the report says of rows where c1 is expected, without what it says of bad ones.
  std::string said() {
    tables.options.hosts = {"c1"};
    ReportOptions judging;
    judging.plan = &tables.plan;
    judging.hosts = tables.options.hosts;
    const std::string text = makeReport(readResults(tables.options).set, judging).verdict.text;
    const std::string end = text.substr(text.find(": "));
    return text.substr(0, text.find(", no error row")) + end;
  }

  MadeTables tables;
};

TEST_F(Verdicts, CountTheRowsOfExpectedTestsOnly) {
  tables.settings(kLine);
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(20, 2, "/e/c1_%.bin")}));
  EXPECT_EQ(
      said(),
      "1 of 1 client, 3 of 3 rows: complete, clean; 2 rows of tests that are not in the settings");
}

TEST_F(Verdicts, CountTheRowsOfExpectedClientsOnly) {
  tables.settings(kLine);
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(0, 3, "/d/c2_%.bin")}));
  EXPECT_EQ(said(), "1 of 1 client, 3 of 3 rows: complete, concurrent, clean; not expected c2");
}

TEST_F(Verdicts, ARowOfAStrangerIsNoneThatWasExpected) {
  tables.settings(std::string(kLine) + "ansic" + std::string(kLine).substr(5));
  std::vector<WrittenRow> others = client(10, 3, "/d/c2_%.bin");
  for (WrittenRow& row : others) row.method = "AnsiC";
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), others}));
  EXPECT_EQ(said(), "1 of 1 client, 3 of 6 rows: not complete, clean; not expected c2");
}

TEST_F(Verdicts, NobodyAsksForRowsOfAStranger) {
  tables.settings(kLine);
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), stopped(0, "/d/c2_%.bin")}));
  EXPECT_EQ(said(), "1 of 1 client, 3 of 3 rows: complete, clean; not expected c2");
}

TEST_F(Verdicts, OfAllRunsTogetherEachShouldHaveItsRows) {
  tables.settings(kLine);
  tables.options.allRuns = true;
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), stopped(20, "/d/c1_%.bin")}));
  EXPECT_EQ(said(), "1 of 1 client, 5 of 6 rows: not complete, clean");
}

TEST_F(Verdicts, CountTheRowsOfAllClientsWhereMoreCameThanExpected) {
  tables.settings(kLine);
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(0, 3, "/d/c2_%.bin")}));
  ReportOptions judging;
  judging.plan = &tables.plan;
  judging.clients = 1;
  const std::string text = makeReport(readResults(tables.options).set, judging).verdict.text;
  EXPECT_EQ(text.substr(0, text.find(", no error row")), "2 of 1 client, 6 of 6 rows");
}

TEST_F(Verdicts, DoNotSayWhetherClientsOfSeveralRunsRanTogether) {
  tables.settings(kLine);
  // The second client is late each time.
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(50, 3, "/d/c2_%.bin"),
                                client(100, 3, "/d/c1_%.bin"), client(150, 3, "/d/c2_%.bin")}));
  const Report newest = makeReport(readResults(tables.options).set, {});
  EXPECT_EQ(newest.verdict.concurrent, false);
  tables.options.allRuns = true;
  const Report all = makeReport(readResults(tables.options).set, {});
  EXPECT_EQ(all.verdict.concurrent, std::nullopt);
  EXPECT_FALSE(all.tests.at(0).overlap || all.tests[0].allActive || all.tests[0].toTheLast);
}

}  // namespace
}  // namespace marrowbench::ctl
