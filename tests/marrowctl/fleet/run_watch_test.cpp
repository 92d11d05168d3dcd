#include "marrowctl/fleet/run_watch.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <set>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"
#include "marrowctl/fleet/finished_note.h"

namespace marrowbench::ctl {
namespace {

// A run on a share, and what its clients leave there.
class RunWatchTest : public testing::Test {
 protected:
  RunWatchTest() : folder{temporary.path(), "run"} {
    std::filesystem::create_directory(folder.path());
  }

  static std::string line(const std::string& dest, const std::string& table) {
    return "posix;0;0;0;4;0;4;2;0;MEMORY;" + dest + ";;" + table + ";true\n";
  }

  void publish(const std::string& text) const {
    test::writeFile(folder.settings().c_str(), text);
    test::setModified(folder.settings().c_str(), kPublished);
  }

  void arm(const std::string& host) const { test::writeFile(folder.ready(host).c_str(), "{}"); }

  void mark(const std::string& host, std::int64_t when, int phase = 1) const {
    std::filesystem::create_directory(folder.doneFolder(phase));
    const std::string path = folder.doneFolder(phase) + "/done__" + host;
    test::writeFile(path.c_str(), "done");
    test::setModified(path.c_str(), when);
  }

  void addRow(const std::string& table, const std::string& dest, bool isWhole = true) const {
    std::ofstream file(folder.file(table), std::ios::app);
    file << "Nov 16. 02:21.29,Posix,Write,,,0,4096,4,0,4,2,0,MEMORY,," << dest
         << ",,,0,52,393846,100,,,,,,,,,,,,,";
    if (isWhole) file << "\n\n";
  }

  [[nodiscard]] const WatchedClient& client(const RunWatch& watch, const std::string& host) const {
    for (const WatchedClient& each : watch.state().clients) {
      if (each.host == host) return each;
    }
    ADD_FAILURE() << host;
    return watch.state().clients.front();
  }

  static constexpr std::int64_t kPublished = 1'600'000'000;
  const test::TempFolder temporary;
  const ControlFolder folder;
};

TEST_F(RunWatchTest, KnowsClientsByTheirFiles) {
  arm("c2");
  ASSERT_EQ(writeFinishedNote(folder, {"c3", "run", "", 143, "why"}), 0);
  RunWatch watch(folder, {{"c1"}, 5});
  watch.look();
  EXPECT_EQ(watch.problem(), "");
  EXPECT_EQ(watch.state().clients.size(), 3U);
  EXPECT_EQ(watch.state().namelessClients, 2);
  EXPECT_TRUE(client(watch, "c2").touchedMs);
  EXPECT_FALSE(client(watch, "c1").touchedMs);
  EXPECT_EQ(client(watch, "c3").finishedStatus, 143);
  EXPECT_EQ(client(watch, "c3").finishedMessage, "why");
  EXPECT_FALSE(watch.state().publishedMs);
}

TEST_F(RunWatchTest, AFinishedFileOfAnEarlierRunDoesNotCount) {
  ASSERT_EQ(writeFinishedNote(folder, {"c1", "run", "", 1, "old"}), 0);
  arm("c1");
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_FALSE(client(watch, "c1").finishedStatus);
  std::filesystem::remove(folder.ready("c1"));
  ASSERT_EQ(writeFinishedNote(folder, {"c1", "run", "", 0, ""}), 0);
  watch.look();
  EXPECT_EQ(client(watch, "c1").finishedStatus, 0);
}

TEST_F(RunWatchTest, CountsFreshMarkersOnly) {
  publish(line("[host].bin", "res.csv"));
  arm("c1");
  arm("c2");
  mark("c1", kPublished + 60);
  mark("c2", kPublished - 1);
  mark("c9", kPublished + 60);
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.state().markersPerClient, 1U);
  EXPECT_EQ(client(watch, "c1").markers, 1U);
  EXPECT_EQ(client(watch, "c2").markers, 0U);
  mark("c2", kPublished + 70);
  watch.look();
  EXPECT_EQ(client(watch, "c2").markers, 1U);
  EXPECT_EQ(client(watch, "c1").markers, 1U);
}

TEST_F(RunWatchTest, CountsRowsAndWhoseTheyAre) {
  publish(line("data/[host]_[iter].bin", "res.csv"));
  arm("c1");
  arm("c_2");
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.state().rowsPerClient, 2);
  EXPECT_TRUE(watch.state().knowsOwners);
  EXPECT_FALSE(watch.state().lastRowMs);
  addRow("res.csv", "/mnt/elsewhere/run/data/c1_0.bin");
  addRow("res.csv", "/mnt/elsewhere/run/data/c_2_0.bin");
  watch.look();
  EXPECT_EQ(watch.state().rows, 2);
  EXPECT_EQ(client(watch, "c1").rows, 1);
  EXPECT_EQ(client(watch, "c_2").rows, 1);
  EXPECT_TRUE(client(watch, "c1").firstRowSeenMs);
  EXPECT_TRUE(watch.state().lastRowMs);
  watch.look();
  EXPECT_EQ(watch.state().rows, 2) << "each row once";
}

TEST_F(RunWatchTest, HalfARowWaitsForItsRest) {
  publish(line("[host].bin", "res.csv"));
  arm("c1");
  RunWatch watch(folder, {});
  addRow("res.csv", folder.file("c1.bin"), false);
  watch.look();
  EXPECT_EQ(watch.state().rows, 0);
  std::ofstream(folder.file("res.csv"), std::ios::app) << "\n\n";
  watch.look();
  EXPECT_EQ(watch.state().rows, 1);
}

TEST_F(RunWatchTest, FollowsATableOfEachClient) {
  publish(line("x.bin", "res_[host].csv"));
  for (int i = 0; i < 450; ++i) arm("c" + std::to_string(i));
  RunWatch watch(folder, {});
  for (int i = 0; i < 450; ++i) addRow("res_c" + std::to_string(i) + ".csv", "x.bin");
  // Two hundred a look.
  watch.look();
  EXPECT_EQ(watch.state().rows, 200);
  watch.look();
  watch.look();
  EXPECT_EQ(watch.state().rows, 450);
  EXPECT_EQ(client(watch, "c449").rows, 1);
}

TEST_F(RunWatchTest, LooksAtAllAtOnceWhereThatIsAsked) {
  publish(line("x.bin", "res_[host].csv"));
  for (int i = 0; i < 450; ++i) arm("c" + std::to_string(i));
  for (int i = 0; i < 450; ++i) addRow("res_c" + std::to_string(i) + ".csv", "x.bin");
  RunWatch watch(folder, {});
  watch.lookAtAll();
  EXPECT_EQ(watch.state().rows, 450);
}

TEST_F(RunWatchTest, OfManyReadyFilesThoseThatAreStillToBeAskedCount) {
  for (int i = 0; i < 450; ++i) arm("c" + std::to_string(i));
  RunWatch watch(folder, {});
  for (int i = 0; i < 4; ++i) {
    watch.look();
    EXPECT_EQ(watch.state().count(ClientState::missing), 0) << i;
  }
  EXPECT_TRUE(client(watch, "c449").touchedMs);
}

TEST_F(RunWatchTest, FindsTablesByNamesWithDates) {
  publish(line("data/[host]_[iter].bin", "res_[host]_[date].csv"));
  arm("c1");
  arm("c2");
  addRow("res_c1_1116_02210.csv", folder.file("data/c1_0.bin"));
  test::setModified(folder.file("res_c1_1116_02210.csv").c_str(), kPublished - 1);
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.state().rows, 0) << "of an earlier run";
  EXPECT_EQ(watch.state().rowsPerClient, 2);
  addRow("res_c1_1116_02213.csv", folder.file("data/c1_0.bin"));
  addRow("res_c1_1116_02214.csv", folder.file("data/c1_1.bin"));
  addRow("res_c2_1116_02213.csv", folder.file("data/c2_0.bin"));
  addRow("res_c2_11.csv", folder.file("data/c2_1.bin"));
  addRow("res_c1_1116_02210.csv", folder.file("data/c1_0.bin"));
  watch.look();
  EXPECT_EQ(client(watch, "c1").rows, 3);
  EXPECT_EQ(client(watch, "c2").rows, 1);
  EXPECT_TRUE(watch.state().uncounted.empty());
  watch.look();
  EXPECT_EQ(watch.state().rows, 4) << "each row once";
}

TEST_F(RunWatchTest, LocksOfTablesWithDatesAreNoTables) {
  publish(line("[host]_[iter].bin", "res_[date]"));
  arm("c1");
  RunWatch watch(folder, {});
  watch.look();
  addRow("res_1116_02213", folder.file("c1_0.bin"));
  addRow("res_1116_02213_lock.txt", folder.file("c1_0.bin"));
  watch.look();
  EXPECT_EQ(watch.state().rows, 1);
}

TEST_F(RunWatchTest, TablesInFoldersWithDatesAreNotExpected) {
  publish(line("[host]_[iter].bin", "[date]/res.csv") + line("[host].bin", "res.csv"));
  arm("c1");
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.state().rowsPerClient, 2);
  EXPECT_EQ(watch.state().uncounted, std::vector<std::string>{folder.file("[date]/res.csv")});
}

TEST_F(RunWatchTest, AShareThatCannotBeReadShowsWhatWasSeenLast) {
  publish(line("[host].bin", "res.csv"));
  arm("c1");
  RunWatch watch(folder, {});
  watch.look();
  const std::string aside = temporary.path() + "/aside";
  std::filesystem::rename(folder.path(), aside);
  test::writeFile(folder.path().c_str(), "");
  watch.look();
  EXPECT_EQ(watch.problem(), "");
  EXPECT_EQ(watch.state().trouble, folder.path() + ": Not a directory");
  EXPECT_EQ(client(watch, "c1").state, ClientState::running);
  test::fakeClock().now += 60'000'000;
  watch.look();
  EXPECT_EQ(watch.problem(), folder.path() + ": Not a directory");
  std::filesystem::remove(folder.path());
  std::filesystem::rename(aside, folder.path());
  watch.look();
  EXPECT_EQ(watch.problem() + watch.state().trouble, "");
}

TEST_F(RunWatchTest, SaysWhereRowsDoNotTellTheirClient) {
  publish(line("x[iter].bin", "res.csv"));
  arm("c1");
  RunWatch watch(folder, {});
  addRow("res.csv", folder.file("x0.bin"));
  watch.look();
  EXPECT_FALSE(watch.state().knowsOwners);
  EXPECT_EQ(watch.state().rows, 1);
}

TEST_F(RunWatchTest, LinesWithoutATableTellNothingOfRows) {
  publish(line("[host].bin", "res.csv") + line("x.bin", " "));
  arm("c1");
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_TRUE(watch.state().knowsOwners);
  EXPECT_EQ(watch.state().rowsPerClient, 2);
}

TEST_F(RunWatchTest, RowsThatWereThereWhenItWasPublishedDoNotCount) {
  addRow("res.csv", folder.file("c1.bin"));
  PublishedNote note;
  note.run = "run";
  note.hosts = {"c1", "c2"};
  note.tables[folder.file("res.csv")] =
      static_cast<std::int64_t>(std::filesystem::file_size(folder.file("res.csv")));
  test::writeFile(folder.published().c_str(), textOf(note));
  publish(line("[host].bin", "res.csv"));
  addRow("res.csv", folder.file("c2.bin"));
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.state().rows, 1);
  EXPECT_EQ(client(watch, "c1").rows, 0);
  EXPECT_EQ(client(watch, "c2").rows, 1);
}

TEST_F(RunWatchTest, ClientsThatWereReadyWhenItWasPublishedCount) {
  PublishedNote note;
  note.hosts = {"c7"};
  note.clocks = {2000, 2500};
  test::writeFile(folder.published().c_str(), textOf(note));
  publish(line("[host].bin", "res.csv"));
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(client(watch, "c7").state, ClientState::missing);
  // 1,600,000,000 is second 40 of a minute; the slowest client's clock shows second 42 then, and it
  // starts with the next minute.
  EXPECT_EQ(watch.state().startMs, (kPublished + 18) * 1000);
}

TEST_F(RunWatchTest, TablesOfTheRunsFolderAreTheSameOnAllMachines) {
  addRow("res.csv", folder.file("c1.bin"));
  PublishedNote note;
  note.tables["res.csv"] =
      static_cast<std::int64_t>(std::filesystem::file_size(folder.file("res.csv")));
  test::writeFile(folder.published().c_str(), textOf(note));
  publish(line("[host].bin", "res.csv"));
  arm("c2");
  addRow("res.csv", folder.file("c2.bin"));
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.state().rows, 1);
}

// Names of the clients that count.
std::set<std::string> hostsOf(const RunWatch& watch) {
  std::set<std::string> hosts;
  for (const WatchedClient& each : watch.state().clients) hosts.insert(each.host);
  return hosts;
}

TEST_F(RunWatchTest, ClientsThatHadGoneBeforeItWasPublishedDoNotCount) {
  const auto leave = [](const std::string& path, std::int64_t when) {
    test::writeFile(path.c_str(), "{}");
    test::setModified(path.c_str(), kPublished + when);
  };
  leave(folder.ready("c1"), -150);
  leave(folder.ready("gone"), -151);
  leave(folder.finished("c2"), 0);
  leave(folder.finished("ended"), -1);
  leave(folder.finished("wanted"), -1000);
  leave(folder.finished("wasReady"), -1);
  RunWatch watch(folder, {{"wanted"}, 0});
  watch.look();
  EXPECT_EQ(hostsOf(watch).size(), 6U) << "before, all are shown";
  PublishedNote note;
  note.hosts = {"c1", "wasReady"};
  test::writeFile(folder.published().c_str(), textOf(note));
  publish(line("[host].bin", "res.csv"));
  const std::set<std::string> expected = {"c1", "c2", "wanted", "wasReady"};
  for (int i = 0; i < 2; ++i) {
    watch.look();
    EXPECT_EQ(hostsOf(watch), expected) << i;
  }
  EXPECT_EQ(client(watch, "wasReady").finishedStatus, 0) << "it has ended just before";
  RunWatch later(folder, {{"wanted"}, 0});
  for (int i = 0; i < 2; ++i) {
    later.look();
    EXPECT_EQ(hostsOf(later), expected) << i;
  }
  arm("late");
  later.look();
  EXPECT_TRUE(hostsOf(later).contains("late"));
}

// A link to nothing stands for a ready file that is there when the folder is read, and gone when it
// is asked.
TEST_F(RunWatchTest, ClientsThatEndWhileTheyAreLookedAtCount) {
  std::filesystem::create_symlink("nothing", folder.ready("c1"));
  RunWatch watch(folder, {});
  watch.look();
  test::writeFile(folder.finished("c1").c_str(), "{}");
  publish(line("[host].bin", "res.csv"));
  watch.look();
  EXPECT_EQ(hostsOf(watch), std::set<std::string>{"c1"});
}

TEST_F(RunWatchTest, TellsHowOldLocksAre) {
  publish(line("[host].bin", "res.csv"));
  arm("c1");
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_TRUE(watch.state().locks.empty());
  test::writeFile(folder.file("res.csv_lock.txt").c_str(), "");
  test::setModified(folder.file("res.csv_lock.txt").c_str(), watch.state().nowMs / 1000 - 100);
  watch.look();
  ASSERT_EQ(watch.state().locks.size(), 1U);
  EXPECT_EQ(watch.state().locks[0].path, folder.file("res.csv_lock.txt"));
  EXPECT_NEAR(static_cast<double>(watch.state().locks[0].ageMs), 100'000, 5000);
}

TEST_F(RunWatchTest, TakesThePhasesThatAreThere) {
  publish(line("[host].bin", "res.csv") + "[cfgPath]run-2.bst\n");
  arm("c1");
  mark("c1", kPublished + 60);
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.state().awaited, folder.settings(2));
  EXPECT_EQ(watch.state().rowsPerClient, 2);
  EXPECT_EQ(client(watch, "c1").state, ClientState::done);
  EXPECT_FALSE(isOver(watch.state()));
  test::writeFile(folder.settings(2).c_str(), line("[host].bin", "two.csv"));
  watch.look();
  EXPECT_EQ(watch.state().awaited, "");
  EXPECT_EQ(watch.state().rowsPerClient, 4);
  EXPECT_EQ(watch.state().markersPerClient, 2U);
  addRow("two.csv", folder.file("c1.bin"));
  mark("c1", kPublished + 90, 2);
  watch.look();
  EXPECT_EQ(watch.state().rows, 1);
  EXPECT_EQ(client(watch, "c1").markers, 2U);
}

TEST_F(RunWatchTest, WaitsForAFolderThatIsStillToCome) {
  std::filesystem::remove(folder.path());
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(watch.problem(), "");
  EXPECT_TRUE(watch.state().clients.empty());
}

TEST_F(RunWatchTest, TellsWhereThereIsNoControlFolder) {
  RunWatch watch({temporary.path() + "/missing", "run"}, {});
  watch.look();
  EXPECT_EQ(watch.problem(),
            temporary.path() + "/missing: No such file or directory. Is the share mounted here?");
}

TEST_F(RunWatchTest, LeavesTheFolderAsItWas) {
  publish(line("[host].bin", "res.csv"));
  arm("c1");
  const auto count = [](const std::string& path) {
    const auto files = std::filesystem::directory_iterator(path);
    return std::distance(begin(files), end(files));
  };
  const auto before = count(folder.path()) + count(temporary.path());
  RunWatch watch(folder, {});
  watch.look();
  EXPECT_EQ(count(folder.path()) + count(temporary.path()), before);
}

}  // namespace
}  // namespace marrowbench::ctl
