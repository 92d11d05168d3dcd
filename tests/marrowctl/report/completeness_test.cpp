#include <gtest/gtest.h>

#include <string>

#include "marrowctl/report/make_report.h"
#include "marrowctl/table/made_tables.h"

namespace marrowbench::ctl {
namespace {

using namespace test;
using testing::Test;

constexpr const char* kLine = "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/[host]_[iter].bin;;/t.csv\n";

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

TEST_F(Verdicts, OfAllRunsTogetherEachShouldHaveItsRows) {
  tables.settings(kLine);
  tables.options.allRuns = true;
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(20, 2, "/d/c1_%.bin")}));
  EXPECT_EQ(said(), "1 of 1 client, 5 of 6 rows: not complete, clean");
}

}  // namespace
}  // namespace marrowbench::ctl
