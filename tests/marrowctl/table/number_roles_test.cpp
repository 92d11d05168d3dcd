#include "marrowctl/table/number_roles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "marrowctl/table/made_tables.h"

namespace marrowbench::ctl {
namespace {

using namespace test;
using Texts = std::vector<std::string>;

// The tests that are found in one table; their paths have marks for iteration, date and host.
Texts testsOf(const std::vector<WrittenRow>& rows) {
  MadeTables tables;
  tables.add("t.csv", rows);
  (void)tables.found();
  return tables.tests();
}

TEST(Iteration, CountsUpFromZeroRowByRow) {
  const struct {
    const char* dest;
    const char* test;
  } cases[] = {
      {"/d/x_%.bin", "MEMORY /d/x_[iter].bin"}, {"/d/x%.bin", "MEMORY /d/x[iter].bin"},
      {"/d/%/x.bin", "MEMORY /d/[iter]/x.bin"}, {"/d/%_x.bin", "MEMORY /d/[iter]_x.bin"},
      {"/d2/x_%.1", "MEMORY /d2/x_[iter].1"},   {"/d/x_1_%.bin", "MEMORY /d/x_1_[iter].bin"}};
  for (const auto& c : cases) {
    MadeTables tables;
    tables.add("t.csv", client(0, 4, c.dest));
    EXPECT_EQ(tables.found(), (Texts{"? 0", "? 1", "? 2", "? 3"})) << c.dest;
    EXPECT_EQ(tables.tests(), Texts{c.test});
  }
}

TEST(Iteration, OfARunThatWasStoppedIsOne) {
  std::vector<WrittenRow> rows = client(0, 90, "/d/x_%.bin");
  rows.resize(40);
  const std::vector<WrittenRow> more = client(40, 90, "/d/x_%.bin");
  rows.insert(rows.end(), more.begin(), more.begin() + 20);
  for (WrittenRow& row : rows) row.iterations = 90;
  EXPECT_EQ(testsOf(rows), Texts{"MEMORY /d/x_[iter].bin"});
}

TEST(Iteration, IsWithinOneClient) {
  // Numbers of clients rise, too, but not row by row within one of them.
  const struct {
    const char* a;
    const char* b;
    Texts hosts;
    const char* test;
  } cases[] = {{"/d/0_%.bin", "/d/1_%.bin", {"0", "1"}, "MEMORY /d/[host]_[iter].bin"},
               {"/d/%_1.bin", "/d/%_2.bin", {"1", "2"}, "MEMORY /d/[iter]_[host].bin"},
               {"/d/c1/%.bin", "/d/c2/%.bin", {"c1", "c2"}, "MEMORY /d/[host]/[iter].bin"}};
  for (const auto& c : cases) {
    MadeTables tables;
    tables.add("t.csv", together({client(0, 4, c.a), client(0, 4, c.b)}));
    EXPECT_EQ(tables.found(),
              (Texts{c.hosts[0] + " 0", c.hosts[1] + " 0", c.hosts[0] + " 1", c.hosts[1] + " 1",
                     c.hosts[0] + " 2", c.hosts[1] + " 2", c.hosts[0] + " 3", c.hosts[1] + " 3"}))
        << c.a;
    EXPECT_EQ(tables.tests(), Texts{c.test});
  }
}

TEST(Iteration, IsTheOrderOfAClientsRowsWhereNoPathTellsIt) {
  MadeTables tables;
  tables.add("t.csv", together({client(0, 3, "/d/alpha.bin"), client(0, 3, "/d/beta.bin")}));
  EXPECT_EQ(tables.found(), (Texts{"alpha 0", "beta 0", "alpha 1", "beta 1", "alpha 2", "beta 2"}));
  // And from 0 again behind the last one.
  std::vector<WrittenRow> twice = client(0, 2, "/d/x.bin");
  const std::vector<WrittenRow> more = client(2, 2, "/d/x.bin");
  twice.insert(twice.end(), more.begin(), more.end());
  MadeTables again;
  again.add("t.csv", twice);
  EXPECT_EQ(again.found(), (Texts{"? 0", "? 1", "? 0", "? 1"}));
}

// Rows of three tests of one client, one after the other; of each the files are called the same.
std::vector<WrittenRow> threeTests(const std::vector<std::string>& dests, int iterations) {
  std::vector<WrittenRow> rows;
  for (const std::string& dest : dests) {
    for (int i = 0; i < iterations; ++i)
      rows.push_back({static_cast<double>(rows.size()), 1, dest, "MEMORY", iterations});
  }
  return rows;
}

TEST(Iteration, BeginsAtZeroAndStaysBelowTheirNumber) {
  const struct {
    Texts dests;
    int iterations;
    const char* why;
  } cases[] = {{{"/d/x_1.bin", "/d/x_2.bin", "/d/x_3.bin"}, 4, "no 0"},
               {{"/d/x_0.bin", "/d/x_1.bin", "/d/x_4.bin"}, 4, "4 of 4"},
               {{"/d/x_000.bin", "/d/x_001.bin", "/d/x_002.bin"}, 4, "zeros in front"},
               {{"/d/x_0.bin", "/d/x_1.bin", "/d/x_2.bin"}, 1, "one iteration"}};
  for (const auto& c : cases) {
    Texts tests;
    for (const std::string& dest : c.dests) tests.push_back("MEMORY " + dest);
    EXPECT_EQ(testsOf(threeTests(c.dests, c.iterations)), tests) << c.why;
  }
}

TEST(Iteration, IsNotTheNumberOfAClient) {
  // It begins again before it has reached the last one.
  MadeTables tables;
  tables.add("t.csv", together({client(0, 6, "/d/c0.bin"), client(0, 6, "/d/c1.bin"),
                                client(0, 6, "/d/c2.bin")}));
  EXPECT_EQ(tables.hosts(), (Texts{"c0", "c1", "c2"}));
}

TEST(Iteration, OfACopyStandsInBothPaths) {
  EXPECT_EQ(testsOf(client(0, 4, "/d/c_%.bin", "/s/x_%.bin")),
            Texts{"/s/x_[iter].bin /d/c_[iter].bin"});
  EXPECT_EQ(testsOf(client(0, 4, "/d/c_%.bin", "/s/x_1.bin")), Texts{"/s/x_1.bin /d/c_[iter].bin"});
}

TEST(Iteration, MayMissRows) {
  std::vector<WrittenRow> rows = client(0, 5, "/d/x_%.bin");
  rows.erase(rows.begin() + 2);
  MadeTables tables;
  tables.add("t.csv", rows);
  EXPECT_EQ(tables.found(), (Texts{"? 0", "? 1", "? 3", "? 4"}));
}

TEST(Iteration, BeginsAgainInALaterRun) {
  std::vector<WrittenRow> rows = client(0, 3, "/d/x_%.bin");
  const std::vector<WrittenRow> more = client(3, 3, "/d/x_%.bin");
  rows.insert(rows.end(), more.begin(), more.end());
  MadeTables tables;
  tables.options.allRuns = true;
  tables.add("t.csv", rows);
  EXPECT_EQ(tables.found(), (Texts{"? 0", "? 1", "? 2", "? 0", "? 1", "? 2"}));
}

TEST(Date, IsWhenTheRowBegan) {
  const struct {
    const char* dest;
    const char* test;
  } cases[] = {{"/d/x_1116_02000.bin", "MEMORY /d/x_[date].bin"},
               {"/d/1115_23595/x.bin", "MEMORY /d/[date]/x.bin"},
               {"/d/x_0301_02000.bin", "MEMORY /d/x_0301_02000.bin"},  // half a year before
               {"/d/x_1316_02000.bin", "MEMORY /d/x_1316_02000.bin"},  // no month
               {"/d/x_1116_0200.bin", "MEMORY /d/x_1116_0200.bin"},    // a digit less
               {"/d/x_1116-02000.bin", "MEMORY /d/x_1116-02000.bin"},
               {"/d/x_1116_02600.bin", "MEMORY /d/x_1116_02600.bin"}};  // no minute
  for (const auto& c : cases) EXPECT_EQ(testsOf({{0, 1, c.dest}}), Texts{c.test}) << c.dest;
}

TEST(Date, StandsBesideTheIteration) {
  std::vector<WrittenRow> rows;
  for (int i = 0; i < 4; ++i) {
    rows.push_back({i * 10.0, 9,
                    "/d/x_1116_0200" + std::to_string(i) + "_" + std::to_string(i) + ".bin",
                    "MEMORY", 4});
  }
  EXPECT_EQ(testsOf(rows), Texts{"MEMORY /d/x_[date]_[iter].bin"});
}

TEST(Settings, TellWhichNumberIsWhat) {
  // Rows of one moment, from which nothing could be found out.
  MadeTables tables;
  tables.settings("posix;0;0;0;64;0;1024;3;0;MEMORY;/d/[iter]_[host]_1.bin;;/t.csv\n");
  tables.add("t.csv", {{0, 1, "/d/2_7_1.bin"}});
  EXPECT_EQ(tables.found(), Texts{"7 2"});
}

}  // namespace
}  // namespace marrowbench::ctl
