#include "marrowctl/fleet/ready_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"
#include "marrowctl/fleet/share_clock.h"

namespace marrowbench::ctl {
namespace {

using test::fakeClock;

// A control folder on a share whose clock is the kernel's; that of this machine is the fake one.
class ReadyFileTest : public testing::Test {
 protected:
  ReadyFileTest() : folder{temporary.path(), "run"}, path(folder.ready("c1")) {
    std::filesystem::create_directory(folder.path());
  }

  static ReadyNote noteOf(const std::string& id, const std::string& host = "c1") {
    ReadyNote note;
    note.host = host;
    note.run = "run";
    note.id = id;
    note.pid = 77;
    return note;
  }

  [[nodiscard]] ReadyFile fileOf(const std::string& id) const { return {folder, noteOf(id)}; }

  ReadyFile::Watcher watcher() {
    return {[this] { return isStopped; },
            [this](const std::string& message) { said.push_back(message); }};
  }

  // As if it had been touched so many seconds ago, by the share's clock.
  void age(std::int64_t seconds) const {
    ClockReading reading;
    ASSERT_EQ(readShareClock(folder.path(), reading), 0);
    test::setModified(path.c_str(), reading.shareMs / 1000 - seconds);
  }

  [[nodiscard]] std::string idThere() const {
    const auto seen = seeReadyFile(path);
    return seen && seen->note ? seen->note->id : "";
  }

  const test::TempFolder temporary;
  const ControlFolder folder;
  const std::string path;
  std::vector<std::string> said;
  bool isStopped = false;
};

TEST_F(ReadyFileTest, IsClaimedWhereNoneIs) {
  ReadyFile file = fileOf("a");
  EXPECT_EQ(file.claim(watcher()).kind, Claim::Kind::held);
  EXPECT_EQ(idThere(), "a");
  EXPECT_TRUE(said.empty());
  EXPECT_TRUE(fakeClock().sleeps.empty());
  file.remove();
  EXPECT_FALSE(seeReadyFile(path));
}

TEST_F(ReadyFileTest, TellsTheClocksDifferenceFromTheFirstTouchOn) {
  ClockReading reading;
  ASSERT_EQ(readShareClock(folder.path(), reading), 0);
  fakeClock().now = (reading.shareMs + 90'000) * 1000;
  ReadyFile file = fileOf("a");
  ASSERT_EQ(file.claim(watcher()).kind, Claim::Kind::held);
  EXPECT_FALSE(seeReadyFile(path)->note->clockOffsetMs);
  ASSERT_EQ(file.touch().kind, Claim::Kind::held);
  // The kernel's clock has gone on, this machine's has not.
  const auto offset = seeReadyFile(path)->note->clockOffsetMs;
  ASSERT_TRUE(offset);
  EXPECT_LE(*offset, 90'000);
  EXPECT_GT(*offset, 60'000);
}

// While tests load the share, writing takes long, and when within that time it was is not known.
TEST_F(ReadyFileTest, ASlowReadingDoesNotReplaceAQuickOne) {
  ClockReading reading;
  ASSERT_EQ(readShareClock(folder.path(), reading), 0);
  fakeClock().now = reading.shareMs * 1000;
  ReadyFile file = fileOf("a");
  ASSERT_EQ(file.claim(watcher()).kind, Claim::Kind::held);
  ASSERT_EQ(file.touch().kind, Claim::Kind::held);
  const auto before = seeReadyFile(path)->note->clockOffsetMs;
  fakeClock().msPerReading = 5000;
  for (int i = 0; i < 14; ++i) ASSERT_EQ(file.touch().kind, Claim::Kind::held);
  EXPECT_EQ(seeReadyFile(path)->note->clockOffsetMs, before);
  // A clock that was set is noticed by the next quick one.
  fakeClock().msPerReading = 0;
  fakeClock().now += 3'600'000'000;
  for (int i = 0; i < 14; ++i) ASSERT_EQ(file.touch().kind, Claim::Kind::held);
  EXPECT_GT(*seeReadyFile(path)->note->clockOffsetMs, 3'000'000);
}

TEST_F(ReadyFileTest, ASlowReadingIsBetterThanNone) {
  ReadyFile file = fileOf("a");
  fakeClock().msPerReading = 500;
  ASSERT_EQ(file.claim(watcher()).kind, Claim::Kind::held);
  ASSERT_EQ(file.touch().kind, Claim::Kind::held);
  EXPECT_TRUE(seeReadyFile(path)->note->clockOffsetMs);
}

TEST_F(ReadyFileTest, TakesTheVersionWithTheNextTouch) {
  ReadyFile file = fileOf("a");
  ASSERT_EQ(file.claim(watcher()).kind, Claim::Kind::held);
  EXPECT_FALSE(seeReadyFile(path)->note->marrowbench);
  file.setProgramVersion("9.1.01");
  ASSERT_EQ(file.touch().kind, Claim::Kind::held);
  EXPECT_EQ(seeReadyFile(path)->note->marrowbench, "9.1.01");
}

TEST_F(ReadyFileTest, OneThatWasLeftBehindIsTakenOverAtOnce) {
  ASSERT_EQ(fileOf("old").claim(watcher()).kind, Claim::Kind::held);
  age(kGoneSeconds + 1);
  EXPECT_EQ(fileOf("new").claim(watcher()).kind, Claim::Kind::held);
  EXPECT_EQ(idThere(), "new");
  EXPECT_TRUE(said.empty());
}

TEST_F(ReadyFileTest, OneThatMayBeLeftBehindIsWatchedUntilItIsOldEnough) {
  ASSERT_EQ(fileOf("old").claim(watcher()).kind, Claim::Kind::held);
  age(100);
  const std::int64_t before = fakeClock().seconds();
  EXPECT_EQ(fileOf("new").claim(watcher()).kind, Claim::Kind::held);
  EXPECT_EQ(idThere(), "new");
  EXPECT_NEAR(static_cast<double>(fakeClock().seconds() - before), 50, 3);
  ASSERT_EQ(said.size(), 1U);
  EXPECT_NE(said.front().find("was touched 1 min 40 s ago by process 77"), std::string::npos)
      << said.front();
}

TEST_F(ReadyFileTest, OneThatIsTouchedMeanwhileIsAnothersClients) {
  ReadyFile other = fileOf("other");
  ASSERT_EQ(other.claim(watcher()).kind, Claim::Kind::held);
  age(20);
  int sleeps = 0;
  fakeClock().duringSleep = [&] {
    if (++sleeps == 7) (void)other.touch();
  };
  const Claim claim = fileOf("mine").claim(watcher());
  EXPECT_EQ(claim.kind, Claim::Kind::taken);
  EXPECT_NE(claim.reason.find("Two clients are called c1"), std::string::npos) << claim.reason;
  EXPECT_EQ(claim.reason.find("localhost"), std::string::npos) << claim.reason;
  EXPECT_EQ(idThere(), "other");
}

TEST_F(ReadyFileTest, ClientsWithoutANameAreToldWhatTheyAreCalled) {
  ReadyFile other(folder, noteOf("other", "NoHostNameSet_"));
  ASSERT_EQ(other.claim(watcher()).kind, Claim::Kind::held);
  // Else the kernel's clock may not have gone on between the two writings.
  test::setModified(folder.ready("NoHostNameSet_").c_str(), 1'000'000'000'000);
  fakeClock().duringSleep = [&] { (void)other.touch(); };
  const Claim claim = ReadyFile(folder, noteOf("mine", "NoHostNameSet_")).claim(watcher());
  EXPECT_EQ(claim.kind, Claim::Kind::taken);
  EXPECT_NE(claim.reason.find("localhost"), std::string::npos) << claim.reason;
}

TEST_F(ReadyFileTest, WaitingForAnotherEndsWhenItGivesItsFileBack) {
  ReadyFile other = fileOf("other");
  ASSERT_EQ(other.claim(watcher()).kind, Claim::Kind::held);
  fakeClock().duringSleep = [&] { other.remove(); };
  EXPECT_EQ(fileOf("mine").claim(watcher()).kind, Claim::Kind::held);
  EXPECT_EQ(idThere(), "mine");
}

TEST_F(ReadyFileTest, WaitingForAnotherEndsOnASignal) {
  ASSERT_EQ(fileOf("other").claim(watcher()).kind, Claim::Kind::held);
  fakeClock().duringSleep = [&] { isStopped = true; };
  EXPECT_EQ(fileOf("mine").claim(watcher()).kind, Claim::Kind::stopped);
  EXPECT_EQ(idThere(), "other");
}

TEST_F(ReadyFileTest, OfTwoThatBothCouldCreateItOneLoses) {
  ReadyFile first = fileOf("first");
  ASSERT_EQ(first.claim(watcher()).kind, Claim::Kind::held);
  // What a share does that lets two win: the second one's file stands in the first one's place.
  ASSERT_EQ(std::remove(path.c_str()), 0);
  ReadyFile second = fileOf("second");
  ASSERT_EQ(second.claim(watcher()).kind, Claim::Kind::held);
  EXPECT_EQ(first.touch().kind, Claim::Kind::taken);
  EXPECT_EQ(second.touch().kind, Claim::Kind::held);
  first.remove();
  EXPECT_EQ(idThere(), "second") << "nobody deletes another one's file";
}

TEST_F(ReadyFileTest, IsMadeAgainWhenItIsGone) {
  ReadyFile file = fileOf("a");
  ASSERT_EQ(file.claim(watcher()).kind, Claim::Kind::held);
  ASSERT_EQ(std::remove(path.c_str()), 0);
  EXPECT_EQ(file.touch().kind, Claim::Kind::held);
  EXPECT_EQ(idThere(), "a");
}

TEST_F(ReadyFileTest, TouchingMakesItYoung) {
  ReadyFile file = fileOf("a");
  ASSERT_EQ(file.claim(watcher()).kind, Claim::Kind::held);
  for (int i = 0; i < 8; ++i) {
    age(100);
    const std::int64_t before = seeReadyFile(path)->modifiedMs;
    ASSERT_EQ(file.touch().kind, Claim::Kind::held);
    EXPECT_GT(seeReadyFile(path)->modifiedMs, before + 90'000) << i;
  }
}

TEST_F(ReadyFileTest, AFileThatIsNoNoteIsAnothersToo) {
  test::writeFile(path.c_str(), "something else\n");
  age(kGoneSeconds - 3);
  EXPECT_EQ(fileOf("a").claim(watcher()).kind, Claim::Kind::held) << "when it is old enough";
  ASSERT_EQ(said.size(), 1U);
  EXPECT_NE(said.front().find("by another process"), std::string::npos);
}

TEST_F(ReadyFileTest, WhatCannotBeCreatedIsTold) {
  std::filesystem::remove(folder.path());
  const Claim claim = fileOf("a").claim(watcher());
  EXPECT_EQ(claim.kind, Claim::Kind::failed);
  EXPECT_EQ(claim.reason, path + ": No such file or directory");
}

}  // namespace
}  // namespace marrowbench::ctl
