#include "marrowctl/fleet/roll_call.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>

#include "helpers/temp_folder.h"
#include "marrowctl/fleet/ready_file.h"

namespace marrowbench::ctl {
namespace {

using Names = std::vector<std::string>;

class RollCallTest : public testing::Test {
 protected:
  RollCallTest() : folder{temporary.path(), "run"}, share(readClock()) {
    std::filesystem::create_directory(folder.path());
  }

  [[nodiscard]] ClockReading readClock() const {
    ClockReading reading;
    EXPECT_EQ(readShareClock(temporary.path(), reading), 0);
    return reading;
  }

  void add(const std::string& host, std::int64_t ageSeconds = 0, bool isConfirmed = true,
           std::int64_t offsetMs = 0) const {
    ReadyNote note;
    note.host = host;
    note.pid = 5;
    note.time = "10:00";
    note.clockOffsetMs = offsetMs;
    if (isConfirmed) note.marrowbench = "9";
    const std::string path = folder.ready(host);
    test::writeFile(path.c_str(), textOf(note, 0));
    test::setModified(path.c_str(), share.nowMs() / 1000 - ageSeconds);
  }

  [[nodiscard]] Roll roll() const {
    Roll found;
    EXPECT_EQ(callRoll(folder, share, found), 0);
    return found;
  }

  const test::TempFolder temporary;
  const ControlFolder folder;
  const ShareTime share;
};

Roll rollWithOffsets(const std::vector<std::int64_t>& offsets) {
  Roll roll;
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    PresentClient client;
    client.host = "c" + std::to_string(i);
    client.note.clockOffsetMs = offsets[i];
    roll.ready.push_back(client);
  }
  return roll;
}

TEST_F(RollCallTest, SortsClientsByTheirFiles) {
  add("c2");
  add("c10", kGoneSeconds - 5);
  add("c3", kGoneSeconds + 5);
  add("c4", 0, false);
  test::writeFile(folder.file("finished__c9").c_str(), "{}");
  test::writeFile(folder.ready("torn").c_str(), "{\"sche");
  const Roll found = roll();
  EXPECT_EQ(found.readyHosts(), (Names{"c10", "c2"}));
  ASSERT_EQ(found.gone.size(), 1U);
  EXPECT_EQ(found.gone.front().host, "c3");
  EXPECT_EQ(found.gone.front().ageMs / 1000, kGoneSeconds + 5);
  EXPECT_EQ(found.starting, (Names{"c4", "torn"}));
}

TEST_F(RollCallTest, NobodyIsThereWhereThereIsNoFolder) {
  std::filesystem::remove(folder.path());
  EXPECT_TRUE(roll().ready.empty());
}

TEST_F(RollCallTest, AllThatAreWantedMayStart) {
  add("c1");
  add("c2");
  EXPECT_EQ(absences(roll(), {{"c1", "c2"}, 0}), Names{});
  EXPECT_EQ(absences(roll(), {{}, 2}), Names{});
  EXPECT_EQ(absences(roll(), {{"c1"}, 0}), Names{}) << "more than that is no absence";
  EXPECT_EQ(absences(roll(), {{}, 1}), Names{});
}

TEST_F(RollCallTest, SaysWhoIsMissing) {
  add("c1");
  add("c3", 200);
  add("c4", 0, false);
  const Names sentences = absences(roll(), {{"c1", "c2", "c3", "c4"}, 0});
  ASSERT_EQ(sentences.size(), 4U);
  EXPECT_EQ(sentences[0], "1 of 4 clients are ready: c1");
  EXPECT_EQ(sentences[1], "missing: c2. \"marrowctl fleet arm\" makes a machine ready");
  EXPECT_EQ(sentences[2],
            "c3 is gone: nobody has touched its ready file for 3 min 20 s (process 5, armed at "
            "10:00)");
  EXPECT_EQ(sentences[3], "about to be ready, in a few seconds: c4");
}

TEST_F(RollCallTest, CountsNobodyWhoWasNotAskedFor) {
  add("c1");
  add("c3");
  add("c4");
  EXPECT_EQ(absences(roll(), {{"c1", "c2"}, 0}).front(), "1 of 2 clients are ready: c1");
  EXPECT_EQ(absences(roll(), {{"c2"}, 0}).front(), "no client is ready");
}

TEST_F(RollCallTest, SaysWhyClientsThatWereArmedAreNoMore) {
  const auto end = [this](const char* host, const char* message) {
    EXPECT_EQ(writeFinishedNote(folder, {host, "run", "10:00", 1, message}), 0);
  };
  end("c1", "an earlier end");
  add("c1");
  end("c2", "gave up");
  end("c3", "gave up");
  end("c4", "");
  end("c5", "nobody has asked for it");
  test::writeFile(folder.finished("c6").c_str(), "torn");
  const Names sentences = absences(roll(), {{"c1", "c2", "c3", "c4", "c6"}, 0});
  ASSERT_EQ(sentences.size(), 4U);
  EXPECT_EQ(sentences[2], "armed before, and ended: c4: exit status 1");
  EXPECT_EQ(sentences[3], "armed before, and ended: c2, c3: gave up");
  EXPECT_EQ(absences(roll(), {{}, 5}).back(),
            "armed before, and ended: c5: nobody has asked for it");
}

TEST_F(RollCallTest, CountsWhereNoNamesAreKnown) {
  add("c1");
  EXPECT_EQ(absences(roll(), {{}, 3}), Names{"1 of 3 clients are ready: c1"});
  std::filesystem::remove(folder.ready("c1"));
  EXPECT_EQ(absences(roll(), {{}, 3}), Names{"no client is ready"});
}

TEST_F(RollCallTest, AnotherClientStandsInForNobody) {
  add("c1");
  add("c9");
  EXPECT_EQ(absences(roll(), {{"c1", "c2"}, 0}).size(), 2U);
  EXPECT_EQ(uninvited(roll(), {{"c1", "c2"}, 0}), Names{"c9"});
  EXPECT_EQ(uninvited(roll(), {{}, 1}), Names{});
}

TEST(WrongClocks, AreAMatterOfMoreThanASecond) {
  EXPECT_EQ(wrongClocks(rollWithOffsets({}), 0), Names{});
  EXPECT_EQ(wrongClocks(rollWithOffsets({0, 1000}), 0), Names{});
  EXPECT_NE(wrongClocks(rollWithOffsets({0, 1001}), 0), Names{});
  EXPECT_EQ(wrongClocks(rollWithOffsets({0, 2000}), 1000), Names{}) << "times are whole seconds";
  EXPECT_NE(wrongClocks(rollWithOffsets({0, 2001}), 1000), Names{});
  EXPECT_NE(wrongClocks(rollWithOffsets({-600, 0, 600}), 0), Names{}) << "of any two";
}

TEST(WrongClocks, DoNotDependOnTheSharesClock) {
  EXPECT_EQ(wrongClocks(rollWithOffsets({90'000, 90'400, 90'200}), 0), Names{});
}

TEST(WrongClocks, AreNamed) {
  EXPECT_EQ(wrongClocks(rollWithOffsets({10, 90'010, 0, -3'090, 20}), 0),
            (Names{"the clock of c1 is 90.0 s ahead of the others'",
                   "the clock of c3 is 3.1 s behind the others'"}));
}

TEST(ClocksOf, AreTheSlowestAndTheFastest) {
  const ClockSpan span = clocksOf(rollWithOffsets({5, -7, 3}));
  EXPECT_EQ(span.slowestMs, -7);
  EXPECT_EQ(span.fastestMs, 5);
}

}  // namespace
}  // namespace marrowbench::ctl
