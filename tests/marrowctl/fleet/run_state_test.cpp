#include "marrowctl/fleet/run_state.h"

#include <gtest/gtest.h>

#include "marrowctl/fleet/ready_file.h"
#include "marrowctl/fleet/watch_text.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

using Names = std::vector<std::string>;

constexpr std::int64_t kStart = 1'700'000'040'000;
constexpr std::int64_t kSecond = 1000;

// A run that was published 74 s before its start: two rows and a marker for each client.
RunState stateAt(std::int64_t secondsSinceStart, std::size_t clients = 0) {
  RunState state;
  state.run = "monday";
  state.publishedMs = kStart - 74 * kSecond;
  state.startMs = kStart;
  state.nowMs = kStart + secondsSinceStart * kSecond;
  state.markersPerClient = 1;
  state.rowsPerClient = 2;
  state.knowsOwners = true;
  for (std::size_t i = 0; i < clients; ++i) {
    WatchedClient client;
    client.host = "c" + std::to_string(i + 1);
    client.touchedMs = state.nowMs;
    state.clients.push_back(client);
  }
  return state;
}

void addRows(RunState& state, std::size_t client, std::int64_t rows, std::int64_t firstSeen = 5) {
  state.clients[client].rows += rows;
  state.clients[client].firstRowSeenMs = kStart + firstSeen * kSecond;
  state.rows += rows;
}

ClientState stateOf(RunState& state, std::size_t client = 0) {
  judgeClients(state);
  return state.clients[client].state;
}

TEST(JudgeClients, WaitingOnesAreReady) {
  RunState state = stateAt(-1, 1);
  EXPECT_EQ(stateOf(state), ClientState::ready);
  state.publishedMs.reset();
  state.startMs.reset();
  EXPECT_EQ(stateOf(state), ClientState::ready);
}

TEST(JudgeClients, AReadyFileThatNobodyHasAskedYetIsNoAbsence) {
  RunState state = stateAt(-1, 1);
  state.clients[0].touchedMs.reset();
  EXPECT_EQ(stateOf(state), ClientState::missing);
  state.clients[0].hasReadyFile = true;
  EXPECT_EQ(stateOf(state), ClientState::ready);
}

// Of thousands, each is asked now and then.
TEST(JudgeClients, TheAgeOfAReadyFileIsThatWhenItWasAsked) {
  RunState state = stateAt(1000, 1);
  WatchedClient& client = state.clients[0];
  client.askedMs = state.nowMs - 200 * kSecond;
  client.touchedMs = client.askedMs - (kGoneSeconds - 1) * kSecond;
  EXPECT_EQ(stateOf(state), ClientState::missing) << "nor is it there any more";
  client.hasReadyFile = true;
  EXPECT_EQ(stateOf(state), ClientState::running);
  *client.touchedMs -= kSecond;
  EXPECT_EQ(stateOf(state), ClientState::missing);
}

TEST(Watching, SaysWhyNothingCanBeSeen) {
  RunState state = stateAt(10, 1);
  EXPECT_EQ(watchLine(state).find("can't be seen"), std::string::npos);
  state.trouble = "/share: Stale file handle";
  EXPECT_NE(watchLine(state).find("can't be seen: /share: Stale file handle"), std::string::npos);
  EXPECT_EQ(lacks(state).front(), "nothing can be seen: /share: Stale file handle");
}

TEST(Watching, SaysWhoseRowsAreNotCounted) {
  RunState state = stateAt(10, 1);
  state.uncounted = {"/share/[date]/res.csv"};
  EXPECT_NE(watchLine(state).find("rows 0 of 2, none of /share/[date]/res.csv is counted"),
            std::string::npos)
      << watchLine(state);
}

TEST(Watching, TellsTheFullMinuteOfTheStart) {
  const auto start = [](std::int64_t off) {
    RunState state = stateAt(10, 1);
    *state.startMs += off;
    const std::string json = watchJson(state);
    return json.substr(json.find("\"start\""), 40);
  };
  EXPECT_EQ(start(-4), start(0)) << "the slowest client is 4 ms ahead of the share";
  EXPECT_NE(start(-kSecond), start(0));
}

TEST(JudgeClients, OnesWhoseMinuteHasBegunAreRunning) {
  RunState state = stateAt(0, 1);
  EXPECT_EQ(stateOf(state), ClientState::running);
}

TEST(JudgeClients, ARowTellsThatOneRunsBeforeItsMinute) {
  RunState state = stateAt(-30, 1);
  addRows(state, 0, 1);
  EXPECT_EQ(stateOf(state), ClientState::running);
}

TEST(JudgeClients, OnesWithAllMarkersAreDone) {
  RunState state = stateAt(10, 1);
  state.clients[0].markers = 1;
  EXPECT_EQ(stateOf(state), ClientState::done);
  state.markersPerClient = 2;
  EXPECT_EQ(stateOf(state), ClientState::running);
}

TEST(JudgeClients, OnesThatEndedAfterTheirMarkersAreDone) {
  RunState state = stateAt(10, 1);
  state.clients[0].markers = 1;
  state.clients[0].touchedMs.reset();
  state.clients[0].finishedStatus = 0;
  EXPECT_EQ(stateOf(state), ClientState::done);
}

TEST(JudgeClients, WhereNoMarkerIsAskedForRowsOrTheEndTellIt) {
  RunState state = stateAt(10, 2);
  state.markersPerClient = 0;
  addRows(state, 0, 2);
  EXPECT_EQ(stateOf(state, 0), ClientState::done);
  EXPECT_EQ(stateOf(state, 1), ClientState::running);
  state.clients[1].touchedMs.reset();
  state.clients[1].finishedStatus = 0;
  EXPECT_EQ(stateOf(state, 1), ClientState::done);
}

TEST(JudgeClients, OnesThatEndedBeforeTheirMarkersAreMissing) {
  RunState state = stateAt(10, 1);
  state.clients[0].touchedMs.reset();
  state.clients[0].finishedStatus = 143;
  state.clients[0].finishedMessage = "ended by Terminated";
  EXPECT_EQ(stateOf(state), ClientState::missing);
  EXPECT_EQ(state.clients[0].reason, "it has ended before its last marker: ended by Terminated");
}

TEST(JudgeClients, OnesThatNobodyTouchesAreMissing) {
  RunState state = stateAt(10, 1);
  state.clients[0].touchedMs = state.nowMs - (kGoneSeconds - 1) * kSecond;
  EXPECT_EQ(stateOf(state), ClientState::running);
  state.clients[0].touchedMs = state.nowMs - kGoneSeconds * kSecond;
  EXPECT_EQ(stateOf(state), ClientState::missing);
  EXPECT_EQ(state.clients[0].reason,
            "it is gone: nobody has touched its ready file for 2 min 30 s");
}

TEST(JudgeClients, OnesThatNeverCameAreMissing) {
  RunState state = stateAt(10, 1);
  state.clients[0].touchedMs.reset();
  EXPECT_EQ(stateOf(state), ClientState::missing);
  EXPECT_EQ(state.clients[0].reason, "it never came");
  addRows(state, 0, 1);
  EXPECT_EQ(stateOf(state), ClientState::running) << "nobody armed it, but there are its rows";
}

TEST(JudgeClients, OnesWithoutARowAMinuteAfterHalfOfTheOthersAreLate) {
  RunState state = stateAt(64, 4);
  addRows(state, 0, 1, 2);
  EXPECT_EQ(stateOf(state, 3), ClientState::running) << "one of four is not half of them";
  addRows(state, 1, 1, 5);
  EXPECT_EQ(stateOf(state, 3), ClientState::running) << "59 s";
  state.nowMs += kSecond;
  EXPECT_EQ(stateOf(state, 3), ClientState::late);
  EXPECT_EQ(stateOf(state, 0), ClientState::running);
  state.knowsOwners = false;
  EXPECT_EQ(stateOf(state, 3), ClientState::running) << "whose rows they are is not known";
}

TEST(IsComplete, TakesEveryMarkerAndEveryRow) {
  RunState state = stateAt(10, 2);
  for (WatchedClient& client : state.clients) client.markers = 1;
  addRows(state, 0, 2);
  addRows(state, 1, 2);
  judgeClients(state);
  EXPECT_TRUE(isComplete(state));
  EXPECT_EQ(lacks(state), Names{});

  RunState other = state;
  other.rows = 3;
  EXPECT_FALSE(isComplete(other));
  other = state;
  other.clients[1].markers = 0;
  judgeClients(other);
  EXPECT_FALSE(isComplete(other));
  other = state;
  other.namelessClients = 1;
  EXPECT_FALSE(isComplete(other));
  other = state;
  other.awaited = "monday-2.bst";
  EXPECT_FALSE(isComplete(other));
  other = state;
  other.publishedMs.reset();
  judgeClients(other);
  EXPECT_FALSE(isComplete(other));
  other = stateAt(10, 0);
  EXPECT_FALSE(isComplete(other)) << "no client is no run";
}

TEST(IsOver, IsWhenNobodyIsLeft) {
  RunState state = stateAt(10, 2);
  judgeClients(state);
  EXPECT_FALSE(isOver(state));
  state.clients[0].markers = 1;
  state.clients[1].touchedMs.reset();
  state.clients[1].finishedStatus = 1;
  judgeClients(state);
  EXPECT_TRUE(isOver(state));
  state.awaited = "monday-2.bst";
  EXPECT_FALSE(isOver(state));
  // Clients that give up leave nobody who waits for the next phase.
  state.clients[0].finishedStatus = 1;
  state.clients[0].finishedMessage = "gave up";
  judgeClients(state);
  EXPECT_EQ(state.clients[0].state, ClientState::missing);
  EXPECT_EQ(state.clients[0].reason, "it has ended before the next phase: gave up");
  EXPECT_TRUE(isOver(state));
  EXPECT_EQ(lacks(state).back(), "monday-2.bst has not been published");
}

TEST(IsOver, IsWhenAllHaveEndedBeforePublication) {
  RunState state = stateAt(0, 2);
  state.publishedMs.reset();
  for (WatchedClient& client : state.clients) {
    EXPECT_FALSE(isOver(state)) << "others wait";
    client.finishedStatus = 1;
    client.finishedMs = state.nowMs - 200'000;
  }
  EXPECT_FALSE(isOver(state)) << "they may be armed again";
  state.clients[0].finishedMs = state.nowMs - 100'000;
  EXPECT_TRUE(isOver(state));
  state.namelessClients = 1;
  EXPECT_FALSE(isOver(state)) << "one who never came may come";
}

TEST(SecondsLeft, IsNotKnownWhereNobodyIsLeft) {
  RunState state = stateAt(30, 2);
  addRows(state, 0, 1);
  addRows(state, 1, 2);
  for (WatchedClient& client : state.clients) client.markers = 1;
  judgeClients(state);
  EXPECT_EQ(secondsLeft(state), std::nullopt) << "a row was lost";
}

TEST(SecondsLeft, CountsFromTheStartOfItsPhase) {
  RunState state = stateAt(300, 2);
  state.rowsPerClient = 4;
  state.rowsBeforePhase = 2;
  addRows(state, 0, 2);
  addRows(state, 1, 2);
  judgeClients(state);
  state.phaseStartMs = state.nowMs + 10'000;
  EXPECT_EQ(secondsLeft(state), std::nullopt) << "the phase has not begun";
  state.phaseStartMs = state.nowMs - 20'000;
  EXPECT_EQ(secondsLeft(state), std::nullopt) << "no row of it is there";
  addRows(state, 0, 1);
  EXPECT_EQ(secondsLeft(state), 60) << "three rows of 20 s";
}

TEST(SecondsLeft, GoesOnAtThePaceSoFar) {
  RunState state = stateAt(30, 3);
  judgeClients(state);
  EXPECT_EQ(secondsLeft(state), std::nullopt);
  addRows(state, 0, 2);
  EXPECT_EQ(secondsLeft(state), 60);
  addRows(state, 1, 2);
  addRows(state, 2, 2);
  EXPECT_EQ(secondsLeft(state), 0);
  addRows(state, 2, 2);
  EXPECT_EQ(secondsLeft(state), std::nullopt) << "more rows than there should be";
}

TEST(SecondsLeft, WaitsForNobodyWhoIsMissing) {
  RunState state = stateAt(30, 3);
  state.namelessClients = 1;
  addRows(state, 0, 1);
  addRows(state, 1, 1);
  state.clients[2].touchedMs.reset();
  judgeClients(state);
  EXPECT_EQ(secondsLeft(state), 30) << "two rows of four";
  addRows(state, 0, 1);
  addRows(state, 1, 1);
  EXPECT_EQ(secondsLeft(state), 0);
}

TEST(Lacks, NamesWhoAndWhat) {
  RunState state = stateAt(90, 4);
  addRows(state, 0, 2);
  addRows(state, 1, 1);
  state.clients[0].markers = 1;
  state.clients[2].touchedMs.reset();
  state.clients[2].finishedStatus = 1;
  state.clients[2].finishedMessage = "gave up";
  state.namelessClients = 1;
  judgeClients(state);
  EXPECT_EQ(lacks(state),
            (Names{"missing: c3: it has ended before its last marker: gave up",
                   "missing: 1 client of which no name is known", "still running: c2",
                   "still late: c4", "7 of 10 rows missing, of c2 (1), c3 (2), c4 (2)"}));
}

TEST(Lacks, SaysThatNothingHasBegun) {
  RunState state = stateAt(0, 1);
  state.publishedMs.reset();
  judgeClients(state);
  EXPECT_EQ(lacks(state), Names{"nothing has been published for this run yet"});
  state.clients[0].touchedMs.reset();
  state.clients[0].finishedStatus = 1;
  state.clients[0].finishedMessage = "gave up";
  judgeClients(state);
  EXPECT_EQ(lacks(state), (Names{"nothing has been published for this run yet",
                                 "missing: c1: it has ended before its last marker: gave up"}));
}

TEST(Lacks, NamesLocksThatWereLeftBehind) {
  const std::string told =
      "the lock /a b.csv_lock.txt is 1 min 0 s old: no row is appended while it is there. "
      "\"marrowctl fleet unlock --table '/a b.csv'\" shows it, and with --age and --yes removes it";
  RunState state = stateAt(0, 1);
  judgeClients(state);
  state.locks = {{"/a b.csv", "/a b.csv_lock.txt", 60'000}};
  EXPECT_EQ(lacks(state).back(), told);
  state.locks[0].ageMs = 59'999;
  EXPECT_EQ(lacks(state).back(), "2 of 2 rows missing, of c1 (2)") << "it may be held";
}

TEST(Lacks, NamesEachLockWhenNobodyIsLeft) {
  RunState state = stateAt(0, 1);
  state.clients[0].touchedMs.reset();
  state.clients[0].finishedStatus = 1;
  judgeClients(state);
  state.locks = {{"/a.csv", "/a.csv_lock.txt", 2000}};
  EXPECT_EQ(
      lacks(state).back(),
      "the lock /a.csv_lock.txt is 2 s old: no row is appended while it is there. "
      "\"marrowctl fleet unlock --table /a.csv\" shows it, and with --age and --yes removes it");
}

TEST(WatchTable, FitsTheTerminal) {
  RunState state = stateAt(30, 1000);
  addRows(state, 0, 1);
  state.clients[7].touchedMs.reset();
  state.locks = {{"/t.csv", "/t.csv_lock.txt", 3000}, {"/u.csv", "/u.csv_lock.txt", 61'000}};
  judgeClients(state);
  for (const int width : {40, 80, 200}) {
    for (const int height : {4, 5, 6, 10, 24, 60}) {
      const auto lines = watchTable(state, {false, width, false}, height);
      EXPECT_LE(lines.size(), static_cast<std::size_t>(height)) << width;
      for (const std::string& line : lines)
        EXPECT_LE(columnsOf(line), static_cast<std::size_t>(width)) << line;
    }
  }
}

TEST(WatchTable, ShowsEverything) {
  RunState state = stateAt(65, 4);
  for (std::size_t i = 0; i < 2; ++i) addRows(state, i, static_cast<std::int64_t>(i) + 1);
  state.clients[1].markers = 1;
  state.clients[2].touchedMs.reset();
  state.lastRowMs = state.nowMs - 4000;
  state.locks = {{"/t.csv", "/t.csv_lock.txt", 3000}};
  judgeClients(state);
  const auto lines = watchTable(state, {false, 80, false}, 20);
  const Names expected = {
      "monday: runs for 1 min 5 s                                              22:15:05",
      "Clients   0 ready   1 running   1 done   1 late   1 missing",
      "Rows      ###############-------------------------  3 of 8, about 1 min 5 s left",
      "Last row  4 s ago   lock held for 3 s",
      "",
      "c3: it never came",
      "",
      "c3 missing 0/2  c4 late 0/2     c1 running 1/2  c2 done 2/2"};
  ASSERT_EQ(lines.size(), expected.size());
  EXPECT_EQ(lines[0], expected[0]);
  EXPECT_EQ(lines[1], expected[1]);
  EXPECT_EQ(lines[2].substr(0, 10), "Rows      ");
  EXPECT_TRUE(lines[2].ends_with("  3 of 8, about 1 min 5 s left")) << lines[2];
  for (std::size_t i = 3; i < lines.size(); ++i) EXPECT_EQ(lines[i], expected[i]);
}

TEST(WatchTable, SaysHowManyItLeavesOut) {
  RunState state = stateAt(-10, 100);
  judgeClients(state);
  const auto lines = watchTable(state, {false, 80, false}, 8);
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(lines[0].substr(0, 26), "monday: starts in 10 s    ");
  EXPECT_NE(lines.back().find("and "), std::string::npos) << lines.back();
  EXPECT_NE(lines.back().find(" more"), std::string::npos) << lines.back();
}

TEST(WatchTable, LetsNothingOfANameReachTheTerminal) {
  RunState state = stateAt(-10, 1);
  state.clients[0].host = "\033[2J";
  judgeClients(state);
  for (const std::string& line : watchTable(state, {false, 80, false}, 8))
    EXPECT_EQ(line.find('\033'), std::string::npos);
}

TEST(WatchTable, CutsNoColourInTwo) {
  RunState state = stateAt(30, 30);
  judgeClients(state);
  for (const std::string& line : watchTable(state, {true, 40, true}, 8)) {
    const std::size_t last = line.rfind('\033');
    if (last == std::string::npos) continue;
    EXPECT_TRUE(line.substr(last).starts_with("\033[0m")) << line;
  }
}

TEST(WatchLine, SaysItInOneLine) {
  RunState state = stateAt(65, 2);
  addRows(state, 0, 1, 10);
  state.lastRowMs = state.nowMs - 4000;
  judgeClients(state);
  EXPECT_EQ(watchLine(state),
            "22:15:05 monday runs for 1 min 5 s: 2 running; rows 1 of 4, about 3 min 15 s left; "
            "last row 4 s ago; no lock");
}

TEST(WatchLine, SaysThatNobodyIsThere) {
  RunState state = stateAt(0);
  state.publishedMs.reset();
  EXPECT_EQ(watchLine(state), "22:14:00 monday waits for its settings file: no client");
}

}  // namespace
}  // namespace marrowbench::ctl
