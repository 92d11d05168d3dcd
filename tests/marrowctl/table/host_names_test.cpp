#include "marrowctl/table/host_names.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "marrowctl/table/made_tables.h"

namespace marrowbench::ctl {
namespace {

using namespace test;
using Texts = std::vector<std::string>;

TEST(HostPattern, IsTriedOnDestThenSourceThenTheTablesName) {
  const struct {
    const char* table;
    WrittenRow row;
    const char* host;
  } cases[] = {{"t-x3.csv", {0, 1, "/d/x1.bin", "/s/x2.bin"}, "1"},
               {"t-x3.csv", {0, 1, "MEMORY", "/s/x2.bin"}, "2"},
               {"t-x3.csv", {0, 1, "/d/y.bin", "/s/x2.bin"}, "2"},
               {"t-x3.csv", {0, 1, "/d/y.bin", "/s/y.bin"}, "3"},
               {"t-y3.csv", {0, 1, "/d/y.bin", "/s/y.bin"}, "?"}};
  for (const auto& c : cases) {
    MadeTables tables;
    tables.options.hostPattern = "x([0-9]+)";
    tables.add(c.table, {c.row});
    EXPECT_EQ(tables.hosts(), Texts{c.host}) << c.table << ' ' << c.row.source << ' ' << c.row.dest;
  }
}

TEST(HostPattern, IsNotTriedOnTheFolderOfATable) {
  MadeTables tables;
  tables.options.hostPattern = "(marrow)";
  tables.add("t.csv", {{0, 1, "/d/y.bin"}});
  EXPECT_NE(tables.options.tables[0].find("marrow"), std::string::npos);
  EXPECT_EQ(tables.hosts(), Texts{"?"});
}

TEST(HostPattern, GivesItsFirstGroup) {
  MadeTables tables;
  tables.options.hostPattern = "(?:room)([a-z]+)-([0-9]+)";
  tables.add("t.csv", {{0, 1, "/d/roomab-12.bin"}});
  EXPECT_EQ(tables.hosts(), Texts{"ab"});
  EXPECT_EQ(tables.tests(), Texts{"MEMORY /d/room[host]-12.bin"});
}

TEST(HostPattern, CountsDigitsWhereIterationsStand) {
  MadeTables tables;
  tables.options.hostPattern = "/(c.)_[0-9]\\.";
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(0, 3, "/d/c2_%.bin")}));
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2"}));
}

TEST(ProblemOfPattern, IsABadExpressionOrOneWithoutAGroup) {
  EXPECT_EQ(problemOfPattern("c([0-9]+)"), "");
  EXPECT_EQ(problemOfPattern("c[0-9]+"), "it has no group: put ( ) around the host");
  EXPECT_NE(problemOfPattern("c([0-9]+"), "");
}

TEST(HostList, NamesStandAloneInPaths) {
  const struct {
    const char* dest;
    const char* host;
  } cases[] = {{"/d/c1.bin", "c1"}, {"/d/c1/x.bin", "c1"}, {"/d/x-c1_0.bin", "c1"},
               {"/c1", "c1"},       {"/d/c10.bin", "?"},   {"/d/xc1.bin", "?"},
               {"/d/0c1.bin", "?"}, {"/d/c1x.bin", "?"},   {"/d/c2.bin", "?"},
               {"/d/C1.bin", "?"}};
  for (const auto& c : cases) {
    MadeTables tables;
    tables.options.hosts = {"c1", "c3"};
    tables.add("t.csv", {{0, 1, c.dest}});
    EXPECT_EQ(tables.hosts(), Texts{c.host}) << c.dest;
  }
}

TEST(HostList, NumbersInNamesAreNoIterations) {
  // Five clients that count from 0, and five iterations.
  std::vector<std::vector<WrittenRow>> clients;
  Texts names;
  for (const char* name : {"c0", "c1", "c2", "c3", "c4"}) {
    clients.push_back(client(0, 5, std::string("/d/") + name + ".bin"));
    names.push_back(name);
  }
  MadeTables byList;
  byList.options.hosts = names;
  byList.add("t.csv", together(clients));
  EXPECT_EQ(byList.hosts(), names);
  EXPECT_EQ(byList.tests(), Texts{"MEMORY /d/[host].bin"});
  MadeTables byPattern;
  byPattern.options.hostPattern = "/(c[0-9])\\.";
  byPattern.add("t.csv", together(clients));
  EXPECT_EQ(byPattern.hosts(), names);
}

TEST(HostList, TheLongestNameCounts) {
  MadeTables tables;
  tables.options.hosts = {"pc", "pc-1", "d"};
  tables.add("t.csv", {{0, 1, "/d/pc/pc-1.bin"}});
  EXPECT_EQ(tables.hosts(), Texts{"pc-1"});
  EXPECT_EQ(tables.tests(), Texts{"MEMORY /[host]/[host]/[host].bin"});
}

TEST(HostList, DestComesBeforeSource) {
  const struct {
    WrittenRow row;
    const char* host;
  } cases[] = {{{0, 1, "/d/c1.bin", "/s/c2.bin"}, "c1"},
               {{0, 1, "MEMORY", "/s/c2.bin"}, "c2"},
               {{0, 1, "/d/x.bin", "/s/c2.bin"}, "c2"}};
  for (const auto& c : cases) {
    MadeTables tables;
    tables.options.hosts = {"c1", "c2"};
    tables.add("t.csv", {c.row});
    EXPECT_EQ(tables.hosts(), Texts{c.host}) << c.row.source << ' ' << c.row.dest;
  }
}

TEST(HostList, OfSeveralTablesTheirNamesComeFirst) {
  // A client may read the files of another one, but writes its own table.
  MadeTables tables;
  tables.options.hosts = {"c1", "c2"};
  tables.add("t_c1.csv", {{0, 1, "MEMORY", "/s/c2.bin"}});
  tables.add("t_c2.csv", {{0, 1, "MEMORY", "/s/c1.bin"}});
  EXPECT_EQ(tables.found(), (Texts{"c1 0", "c2 0"}));
}

TEST(HostList, OneTablesNameTellsNothing) {
  MadeTables tables;
  tables.options.hosts = {"c1", "c2"};
  tables.add("t_c1.csv", {{0, 1, "/d/x.bin"}});
  EXPECT_EQ(tables.hosts(), Texts{"?"});
}

TEST(WithoutHosts, PutsTheMarkInTheirPlaces) {
  EXPECT_EQ(withoutHosts("c1: no /d/c2/c1.bin, c12", {"c1", "c2"}),
            "[host]: no /d/[host]/[host].bin, c12");
  EXPECT_EQ(withoutHosts("nothing", {"c1"}), "nothing");
}

}  // namespace
}  // namespace marrowbench::ctl
