#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "marrowctl/table/made_tables.h"

namespace marrowbench::ctl {
namespace {

using namespace test;
using Texts = std::vector<std::string>;

// What is found out of one table.
Texts hostsOf(const std::vector<WrittenRow>& rows) {
  MadeTables tables;
  tables.add("t.csv", rows);
  return tables.hosts();
}

TEST(HostTokens, AreWhereThePathsOfClientsDiffer) {
  // Between "/", "_" and "."; whatever the names are.
  const struct {
    const char* a;
    const char* b;
    Texts hosts;
  } cases[] = {{"/d/c1_%.bin", "/d/c2_%.bin", {"c1", "c2"}},
               {"/d/alpha/%.bin", "/d/beta/%.bin", {"alpha", "beta"}},
               {"/d/data.alpha.%", "/d/data.beta.%", {"alpha", "beta"}},
               {"/d/pc-07_%.bin", "/d/pc-11_%.bin", {"pc-07", "pc-11"}},
               {"/d/x_%_alpha", "/d/x_%_c9", {"alpha", "c9"}},
               {"/d/c2_%.bin", "/d/c10_%.bin", {"c2", "c10"}}};
  for (const auto& c : cases) {
    MadeTables tables;
    tables.add("t.csv", together({client(0, 3, c.a), client(0, 3, c.b)}));
    EXPECT_EQ(tables.hosts(), c.hosts) << c.a;
    EXPECT_EQ(tables.tests().size(), 1U) << c.a << ": one test of two clients";
  }
}

TEST(HostTokens, AreTakenOutOfTheNameOfTheTest) {
  MadeTables tables;
  tables.add("t.csv", together({client(0, 3, "/d/c1/x_%.bin", "/s/c1_%.bin"),
                                client(0, 3, "/d/c2/x_%.bin", "/s/c2_%.bin")}));
  EXPECT_EQ(tables.found(), (Texts{"c1 0", "c2 0", "c1 1", "c2 1", "c1 2", "c2 2"}));
  EXPECT_EQ(tables.tests(), Texts{"/s/[host]_[iter].bin /d/[host]/x_[iter].bin"});
}

TEST(HostTokens, AreNotFilesThatOneClientWritesInTurn) {
  // Line after line, as one client does: nothing ran at the same time.
  std::vector<WrittenRow> rows = client(0, 3, "/d/small_%.bin");
  const std::vector<WrittenRow> more = client(3, 3, "/d/large_%.bin");
  rows.insert(rows.end(), more.begin(), more.end());
  EXPECT_EQ(hostsOf(rows), Texts{"?"});
}

TEST(HostTokens, AreThoseWithMostRows) {
  // Of two places that differ: clients, and the tests that each of them runs.
  std::vector<std::vector<WrittenRow>> clients;
  for (const char* name : {"c1", "c2", "c3"}) {
    clients.push_back(client(0, 3, std::string("/d/") + name + "_small_%.bin"));
    clients.push_back(client(3, 3, std::string("/d/") + name + "_large_%.bin"));
  }
  MadeTables tables;
  tables.add("t.csv", together(clients));
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2", "c3"}));
  EXPECT_EQ(tables.tests(),
            (Texts{"MEMORY /d/[host]_small_[iter].bin", "MEMORY /d/[host]_large_[iter].bin"}));
}

TEST(HostTokens, OfAReadOfOthersFilesTellTheReaderAsFarAsPathsDo) {
  // Each client reads what the other one wrote: the paths name the writer.
  MadeTables tables;
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(0, 3, "/d/c2_%.bin"),
                                client(3, 3, "MEMORY", "/d/c2_%.bin"),
                                client(3, 3, "MEMORY", "/d/c1_%.bin")}));
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2"}));
}

TEST(HostTokens, AreInTheNamesOfSeveralTables) {
  // The same paths everywhere, at the same time.
  MadeTables tables;
  tables.add("res_c1.csv", client(0, 5, "/d/x_%.bin"));
  tables.add("res_c2.csv", client(0, 5, "/d/x_%.bin"));
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2"}));
  EXPECT_EQ(tables.tests(), Texts{"MEMORY /d/x_[iter].bin"});
}

TEST(HostTokens, OfTablesComeBeforeThoseOfPaths) {
  // Neighbours read each other's files; each has a table of its own.
  MadeTables tables;
  tables.add("res_c1.csv", client(0, 5, "MEMORY", "/d/c2_%.bin"));
  tables.add("res_c2.csv", client(0, 5, "MEMORY", "/d/c1_%.bin"));
  EXPECT_EQ(tables.found(), (Texts{"c1 0", "c1 1", "c1 2", "c1 3", "c1 4", "c2 0", "c2 1", "c2 2",
                                   "c2 3", "c2 4"}));
}

TEST(HostTokens, OfTablesThatClientsShareAreNone) {
  // One table for each test: what differs in their names is the test.
  MadeTables tables;
  tables.add("write.csv", together({client(0, 5, "/d/c1_%.bin"), client(0, 5, "/d/c2_%.bin")}));
  tables.add("read.csv", together({client(5, 5, "MEMORY", "/d/c1_%.bin"),
                                   client(5, 5, "MEMORY", "/d/c2_%.bin")}));
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2"}));
}

TEST(HostTokens, OfRunsOneAfterTheOtherAreNone) {
  // Two tables of one client, of Monday and of Tuesday.
  MadeTables tables;
  tables.options.allRuns = true;
  tables.add("res_monday.csv", client(0, 3, "/d/x_%.bin"));
  tables.add("res_tuesday.csv", client(3, 3, "/d/x_%.bin"));
  EXPECT_EQ(tables.hosts(), Texts{"?"});
}

TEST(HostTokens, AreMissingWhereNothingDiffers) {
  EXPECT_EQ(hostsOf(client(0, 3, "/d/x_%.bin")), Texts{"?"});
  EXPECT_EQ(hostsOf(together({client(0, 3, "/d/x_%.bin"), client(0, 3, "/d/x_%.bin")})),
            Texts{"?"});
}

TEST(HostTokens, OnlyHostIsNotLookedFor) {
  MadeTables tables;
  tables.options.onlyHost = "me";
  tables.add("t.csv", together({client(0, 3, "/d/c1_%.bin"), client(0, 3, "/d/c2_%.bin")}));
  EXPECT_EQ(tables.hosts(), Texts{"me"});
}

TEST(HostTokens, OfTablesAreTakenOutOfThePathsOfTheirClients) {
  // Runs so far apart that the paths alone do not tell who a client is.
  MadeTables tables;
  for (const std::string name : {"c1", "c2"}) {
    tables.add("t_" + name + ".csv", together({client(0, 3, "/d/" + name + "_%.bin"),
                                               client(90000, 3, "/d/" + name + "_%.bin")}));
  }
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2"}));
  EXPECT_EQ(tables.tests(), Texts{"MEMORY /d/[host]_[iter].bin"});
}

TEST(HostTokens, OfTablesWithLinesThatDifferInTheirIterationsAlone) {
  MadeTables tables;
  for (const char* const name : {"c1.csv", "c2.csv"})
    tables.add(name, together({client(0, 1, "/d/x_%.bin"), client(5, 5, "/d/x_%.bin")}));
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2"}));
}

TEST(HostsOfSettings, AreInTheFoldersOfTables) {
  MadeTables tables;
  std::filesystem::create_directory(tables.folder.path() + "/c1");
  tables.settings("posix;0;0;0;64;0;1024;3;0;MEMORY;/d/x_[iter].bin;;[host]/t.csv\n");
  tables.add("c1/t.csv", client(0, 3, "/d/x_%.bin"));
  EXPECT_EQ(tables.hosts(), Texts{"c1"});
}

TEST(HostsOfSettings, AreThoseOfTheTemplates) {
  const struct {
    const char* source;
    const char* dest;
    WrittenRow row;
    const char* host;
  } cases[] = {{"MEMORY", "/d/[host]_[iter].bin", {0, 1, "/d/my_pc_0.bin"}, "my_pc"},
               {"/s/[host].bin", "MEMORY", {0, 1, "MEMORY", "/s/c7.bin"}, "c7"},
               {"/s/[host].bin", "/d/[host].bin", {0, 1, "/d/c1.bin", "/s/c1.bin"}, "c1"},
               {"MEMORY", "[cfgPath]data_[host].bin", {0, 1, "/mnt/elsewhere/data_c1.bin"}, "c1"},
               {"MEMORY", "[temp][host]_[date].bin", {0, 1, "/var/tmp/c1_1116_02000.bin"}, "c1"},
               {"MEMORY", "/d/[host]/[host].bin", {0, 1, "/d/c1/c1.bin"}, "c1"},
               {"MEMORY", "/d/x.bin", {0, 1, "/d/x.bin"}, "?"}};
  for (const auto& c : cases) {
    MadeTables tables;
    tables.settings(std::string("posix;0;0;0;64;0;1024;3;0;") + c.source + ";" + c.dest +
                    ";;/t.csv\n");
    tables.add("t.csv", {c.row});
    EXPECT_EQ(tables.hosts(), Texts{c.host}) << c.source << ' ' << c.dest;
    EXPECT_EQ(tables.outcome.set.tests.size(), 1U) << "it is the row of the line";
  }
}

TEST(HostsOfSettings, AreNoWordsOfTheTemplates) {
  // So short that they seem to run at the same time.
  MadeTables tables;
  tables.settings(
      "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/plain_[iter].bin;;/t.csv\n"
      "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/other_[iter].bin;;/t.csv\n");
  std::vector<WrittenRow> rows;
  for (const char* const name : {"/d/plain_", "/d/other_"}) {
    for (const char* const iteration : {"0.bin", "1.bin", "2.bin"})
      rows.push_back({0, 0.3, std::string(name) + iteration});
  }
  tables.add("t.csv", rows);
  EXPECT_EQ(tables.hosts(), Texts{"?"});
}

TEST(HostsOfSettings, AreInTheFoldersThatClientsHaveInPlaceOfTheSettingsFiles) {
  MadeTables tables;
  tables.settings("posix;0;0;0;64;0;1024;3;0;MEMORY;[cfgPath]data_[iter].bin;;/t.csv\n");
  tables.add("t.csv",
             together({client(0, 3, "/mnt/c1/data_%.bin"), client(0.2, 3, "/mnt/c2/data_%.bin")}));
  EXPECT_EQ(tables.hosts(), (Texts{"c1", "c2"}));
}

TEST(HostsOfSettings, TheTablesNameComesBeforeASource) {
  // It reads the file of another client.
  MadeTables tables;
  tables.settings("posix;0;0;0;64;0;1024;3;0;/s/[host].bin;MEMORY;;/t_[host].csv\n");
  tables.add("t_c1.csv", {{0, 1, "MEMORY", "/s/c2.bin"}});
  EXPECT_EQ(tables.hosts(), Texts{"c1"});
}

TEST(HostsOfSettings, TheLongestTemplateWins) {
  MadeTables tables;
  tables.settings(
      "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/[host].bin;;/t.csv\n"
      "posix;0;0;0;64;0;1024;3;0;MEMORY;/d/copy_[host].bin;;/t.csv\n");
  tables.add("t.csv", {{0, 1, "/d/copy_c1.bin"}, {1, 1, "/d/c1.bin"}});
  EXPECT_EQ(tables.hosts(), Texts{"c1"});
}

}  // namespace
}  // namespace marrowbench::ctl
