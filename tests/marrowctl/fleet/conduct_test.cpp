#include "marrowctl/fleet/conduct.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"
#include "marrowctl/fleet/finished_note.h"
#include "marrowctl/fleet/published_note.h"
#include "marrowctl/fleet/ready_note.h"

namespace marrowbench::ctl {
namespace {

using test::fakeClock;

// A share with armed clients, which act while the conductor sleeps.
class ConductTest : public testing::Test {
 protected:
  ConductTest() : folder{temporary.path() + "/control", "run"} {
    std::filesystem::create_directories(folder.path());
    options.folder = folder;
    options.waitsForMoment = false;
    listener.publishing = [](const PublishOptions&) {
      PublishListener quiet;
      quiet.prepared = [](const Preparation&) {};
      quiet.waiting = [](std::int64_t, const StartWindow&) {};
      quiet.published = [](std::int64_t, const StartWindow&) {};
      return quiet;
    };
    listener.looked = [this](const RunState& state) { told.push_back(state.trouble); };
    listener.phaseDone = [this](std::size_t phase) { phasesDone = phase; };
    fakeClock().duringSleep = [this] {
      // Ten in a second.
      if (++sleeps % 10 == 0 && everySecond) everySecond(sleeps / 10);
    };
  }

  void addPhases(std::size_t count, const std::string& table = "res_[host].csv") {
    for (std::size_t i = 0; i < count; ++i) {
      options.files.push_back(temporary.path() + "/phase" + std::to_string(i + 1) + ".bst");
      test::writeFile(options.files.back().c_str(), "posix;0;0;0;4;0;4;1;0;MEMORY;[host]_" +
                                                        std::to_string(i) + ".bin;;" + table +
                                                        ";true\n");
    }
  }

  void arm(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      ReadyNote note;
      note.host = "c" + std::to_string(i);
      note.clockOffsetMs = 0;
      note.marrowbench = "9";
      hosts.push_back(note.host);
      test::writeFile(folder.ready(note.host).c_str(), textOf(note, 0));
    }
    options.wanted.hosts = hosts;
  }

  void mark(const std::string& host, int phase) const {
    std::filesystem::create_directory(folder.doneFolder(phase));
    test::writeFile((folder.doneFolder(phase) + "/done__" + host).c_str(), "done");
  }

  void addRow(const std::string& table, const std::string& dest) const {
    std::ofstream(folder.file(table), std::ios::app)
        << "Nov 16. 02:21.29,Posix,Write,,,0,4096,4,0,4,2,0,MEMORY,," << folder.file(dest)
        << ",,,0,52,393846,100,,,,,,,,,,,,,\n\n";
  }

  // Everybody runs a phase as soon as it is there.
  void runPhases() {
    for (int phase = 1; phase <= static_cast<int>(options.files.size()); ++phase) {
      if (!std::filesystem::exists(folder.settings(phase))) return;
      for (const std::string& host : hosts) {
        if (std::filesystem::exists(folder.doneFolder(phase) + "/done__" + host)) continue;
        addRow("res_" + host + ".csv", host + "_" + std::to_string(phase - 1) + ".bin");
        mark(host, phase);
      }
    }
  }

  const test::TempFolder temporary;
  const ControlFolder folder;
  ConductOptions options;
  ConductListener listener;
  std::vector<std::string> hosts;
  std::function<void(int second)> everySecond;
  std::vector<std::string> told;  // what hindered the looks
  std::size_t phasesDone = 0;
  int sleeps = 0;
};

// Of the ready files only some are asked at each look.
TEST_F(ConductTest, MoreClientsThanALookAsksAreNotMissing) {
  addPhases(2);
  arm(450);
  everySecond = [this](int second) {
    if (second >= 3) runPhases();
  };
  const ConductOutcome outcome = conduct(options, listener);
  EXPECT_EQ(outcome.status, 0) << outcome.problem << outcome.reasons.size();
  EXPECT_EQ(phasesDone, 2U);
}

TEST_F(ConductTest, AMarkerMayBeSeenLaterThanTheEndOfItsClient) {
  addPhases(1);
  arm(2);
  everySecond = [this](int second) {
    if (second == 2) {
      mark("c0", 1);
      for (const std::string& host : hosts) {
        addRow("res_" + host + ".csv", host + "_0.bin");
        std::filesystem::remove(folder.ready(host));
        ASSERT_EQ(writeFinishedNote(folder, {host, "run", "", 0, ""}), 0);
      }
    }
    if (second == 7) mark("c1", 1);
  };
  const ConductOutcome outcome = conduct(options, listener);
  EXPECT_EQ(outcome.status, 0) << outcome.problem;
}

TEST_F(ConductTest, AClientThatEndedWithoutItsMarkerStopsItInTheEnd) {
  addPhases(2);
  arm(2);
  everySecond = [this](int second) {
    if (second != 2) return;
    std::filesystem::remove(folder.ready("c1"));
    ASSERT_EQ(writeFinishedNote(folder, {"c1", "run", "", 1, "why"}), 0);
  };
  const ConductOutcome outcome = conduct(options, listener);
  EXPECT_EQ(outcome.status, 1);
  ASSERT_FALSE(outcome.reasons.empty());
  EXPECT_EQ(outcome.reasons.front(), "missing: c1: it has ended before its last marker: why");
  EXPECT_FALSE(std::filesystem::exists(folder.settings(2)));
}

// Else one that comes later to watch would take the rows of the first phase for an earlier run's.
TEST_F(ConductTest, NotesOfLaterPhasesKnowTablesOfThisRun) {
  addPhases(2, "results.csv");
  arm(2);
  test::writeFile(folder.file("old.csv").c_str(), "");
  everySecond = [this](int second) {
    for (int phase = 1; phase <= 2; ++phase) {
      if (second < 2 || !std::filesystem::exists(folder.settings(phase))) continue;
      for (const std::string& host : hosts) {
        if (std::filesystem::exists(folder.doneFolder(phase) + "/done__" + host)) continue;
        addRow("results.csv", host + "_" + std::to_string(phase - 1) + ".bin");
        mark(host, phase);
      }
    }
  };
  EXPECT_EQ(conduct(options, listener).status, 0);
  const auto note = publishedNoteFrom(test::readFile(folder.published(2).c_str()));
  ASSERT_TRUE(note);
  EXPECT_EQ(note->phase, 2);
  EXPECT_TRUE(note->tables.empty()) << note->tables.begin()->first;
}

TEST_F(ConductTest, AShareThatCannotBeReadForAWhileStopsNothing) {
  addPhases(1);
  arm(2);
  const std::string aside = temporary.path() + "/aside";
  everySecond = [&](int second) {
    if (second == 2) {
      std::filesystem::rename(folder.path(), aside);
      test::writeFile(folder.path().c_str(), "no folder");
    }
    if (second != 50) return;
    std::filesystem::remove(folder.path());
    std::filesystem::rename(aside, folder.path());
    runPhases();
  };
  const ConductOutcome outcome = conduct(options, listener);
  EXPECT_EQ(outcome.status, 0) << outcome.problem;
  EXPECT_NE(std::find(told.begin(), told.end(), folder.path() + ": Not a directory"), told.end());
}

TEST_F(ConductTest, AShareThatCannotBeReadForAMinuteStopsIt) {
  addPhases(2);
  arm(2);
  everySecond = [this](int second) {
    if (second != 2) return;
    std::filesystem::rename(folder.path(), temporary.path() + "/aside");
    test::writeFile(folder.path().c_str(), "no folder");
  };
  const ConductOutcome outcome = conduct(options, listener);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.problem, folder.path() + ": Not a directory");
  EXPECT_GE(sleeps, 600);
  ASSERT_EQ(outcome.reasons.size(), 1U);
  EXPECT_EQ(outcome.reasons.front(), "phase 2 is not published: the clients wait for " +
                                         folder.settings(2) + " until they are ended, or give up");
}

}  // namespace
}  // namespace marrowbench::ctl
