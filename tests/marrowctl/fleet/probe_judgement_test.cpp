#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "marrowctl/fleet/probe.h"
#include "marrowctl/fleet/probe_output.h"

namespace marrowbench::ctl {
namespace {

Delays seenAfter(double seconds) { return {{seconds, seconds}, 0}; }
Delays notSeen() { return {{}, 2}; }

// A share on which all is well, seen through two mounts.
Probe goodShare() {
  Probe probe;
  probe.asked = {"/a", "/b", false, {}};
  probe.secondMountPoint = Mount{"/b", "nfs4", "server:/x", "rw,vers=4.1"};
  probe.races = CreateRaces{16, 100, 100, 0, 0, {}, false};
  probe.secondsPerRow = 0.003;
  RowTest rows;
  rows.clients = 8;
  rows.told = rows.kept = 80;
  rows.headers = 1;
  probe.rows = rows;
  SecondMount second;
  second.limitSeconds = 65;
  second.newFile = second.newFileLookedFor = second.newFileListed = seenAfter(0.01);
  second.removedFile = second.changedFile = second.replacedFile = seenAfter(0.01);
  probe.second = second;
  probe.times = FileTimes{1, -0.001, 0.001};
  return probe;
}

TEST(Judge, OneTableIsSafeOnAGoodShare) {
  const ProbeJudgement judgement = judge(goodShare());
  EXPECT_EQ(judgement.verdict, ProbeVerdict::oneTable);
  EXPECT_TRUE(judgement.reasons.empty());
  EXPECT_TRUE(judgement.notes.empty());
  EXPECT_TRUE(judgement.options.empty());
  EXPECT_EQ(judgement.clients, 40);
}

TEST(Judge, TellsHowManyClientsOneTableBears) {
  const struct {
    double secondsPerRow;
    int clients;
  } cases[] = {{0, 40}, {0.25, 40}, {0.5, 20}, {1, 10}, {30, 1}};
  for (const auto& c : cases) {
    Probe probe = goodShare();
    probe.secondsPerRow = c.secondsPerRow;
    EXPECT_EQ(judge(probe).clients, c.clients) << c.secondsPerRow;
  }
}

struct Case {
  const char* what;
  std::function<void(Probe&)> spoil;
  ProbeVerdict verdict;
  const char* reason;  // part of the first one
};

TEST(Judge, NamesWhatIsWrong) {
  const ProbeVerdict own = ProbeVerdict::ownTables, none = ProbeVerdict::notUsable;
  const Case cases[] = {
      {"winners", [](Probe& p) { p.races->severalWinners = 3; }, own,
       "several winners in 3 of 100"},
      {"no winner", [](Probe& p) { p.races->noWinner = 1; }, own, "no winner in 1 of 100"},
      {"EPERM", [](Probe& p) { p.races->otherAnswers["Operation not permitted"] = 7; }, own,
       "\"Operation not permitted\" 7 times"},
      {"rows gone", [](Probe& p) { p.rows->kept = 55; }, own, "25 of 80 rows"},
      {"two headers", [](Probe& p) { p.rows->headers = 2; }, own, "2 headers"},
      {"torn", [](Probe& p) { p.rows->strange = 1; }, own, "1 line that is no row"},
      {"locked", [](Probe& p) { p.rows->locked = 2; }, own, "2 of 8 clients waited"},
      {"failed", [](Probe& p) { p.rows->failed = 2; }, own, "2 rows could not be written"},
      {"lock left", [](Probe& p) { p.rows->leavesLock = true; }, own, "a lock stays behind"},
      {"late", [](Probe& p) { p.second->removedFile = seenAfter(21); }, own, "sees 21 s late"},
      {"lock never gone", [](Probe& p) { p.second->removedFile = notSeen(); }, own,
       "does not see within 65 s that a lock is gone"},
      {"old locks",
       [](Probe& p) {
         p.times = FileTimes{1, -8.5e8, -8e8};
       },
       own, "old when they"},
      {"no rows", [](Probe& p) { p.rows.reset(); }, own, "no processes could be started"},
      {"calls", [](Probe& p) { p.troubles = {"a file can't be renamed over another: x"}; }, none,
       "a file can't be renamed"},
      {"hung", [](Probe& p) { p.races->hasHung = true; }, none, "does not answer"},
      {"rows hung", [](Probe& p) { p.rows->hasHung = true; }, none, "does not answer"},
      {"blind", [](Probe& p) { p.second->newFile = p.second->newFileListed = notSeen(); }, none,
       "does not see new files"},
  };
  for (const Case& c : cases) {
    Probe probe = goodShare();
    c.spoil(probe);
    const ProbeJudgement judgement = judge(probe);
    EXPECT_EQ(judgement.verdict, c.verdict) << c.what;
    ASSERT_EQ(judgement.reasons.size(), 1U) << c.what;
    EXPECT_NE(judgement.reasons[0].find(c.reason), std::string::npos) << judgement.reasons[0];
    EXPECT_FALSE(judgement.clients) << c.what;
  }
}

TEST(Judge, NotesWhatOneShouldKnowBesides) {
  const struct {
    const char* what;
    std::function<void(Probe&)> change;
    const char* note;
  } cases[] = {
      {"one mount",
       [](Probe& p) {
         p.asked.second.clear();
         p.second.reset();
       },
       "one mount of one machine"},
      {"space", [](Probe& p) { p.preallocationRefusal = "Not supported"; }, "Not supported"},
      {"case", [](Probe& p) { p.isCaseSensitive = false; }, "case of letters"},
      {"no times", [](Probe& p) { p.times.reset(); }, "can't be asked"},
      {"ahead",
       [](Probe& p) {
         p.times = FileTimes{1, 89.9, 90};
       },
       "89.9 s ahead of this"},
      {"behind",
       [](Probe& p) {
         p.times = FileTimes{1, -91, -90};
       },
       "90 s behind this"},
      {"looked for in vain", [](Probe& p) { p.second->newFileLookedFor = seenAfter(30); },
       "sees it 30 s after it was made; \"marrowctl fleet arm\""},
  };
  for (const auto& c : cases) {
    Probe probe = goodShare();
    c.change(probe);
    const ProbeJudgement judgement = judge(probe);
    EXPECT_EQ(judgement.verdict, ProbeVerdict::oneTable) << c.what;
    ASSERT_EQ(judgement.notes.size(), 1U) << c.what;
    EXPECT_NE(judgement.notes[0].find(c.note), std::string::npos) << judgement.notes[0];
  }
}

TEST(Judge, TwoFoldersOfOneMountShowNoOtherClient) {
  Probe probe = goodShare();
  probe.isOneMount = true;
  const ProbeJudgement judgement = judge(probe);
  EXPECT_EQ(judgement.verdict, ProbeVerdict::oneTable);
  ASSERT_EQ(judgement.notes.size(), 2U);
  EXPECT_EQ(judgement.notes[0],
            "both are one mount to this system: mount it again with nosharecache (NFS) or "
            "nosharesock (SMB)");
  EXPECT_TRUE(judgement.notes[1].ends_with("what other clients see, and when, it can't tell"));
  // What the one memory shows at once is no reason to keep the advice back.
  ASSERT_EQ(judgement.options.size(), 1U);
  EXPECT_TRUE(judgement.options[0].starts_with("lookupcache=positive"));
}

TEST(Judge, SaysHowFarOneMountCanShow) {
  const struct {
    const char* what;
    Mount mount;
    bool hasSecond, isOneMount, isInPart;
  } cases[] = {
      {"a share", {"/a", "nfs4", "server:/x", "rw"}, false, false, true},
      {"a share twice", {"/a", "nfs4", "server:/x", "rw"}, true, true, true},
      {"two mounts", {"/a", "nfs4", "server:/x", "rw"}, true, false, false},
      {"a disk", {"/", "ext4", "/dev/sda1", "rw"}, false, false, false},
  };
  for (const auto& c : cases) {
    Probe probe = goodShare();
    probe.mount = c.mount;
    probe.isOneMount = c.isOneMount;
    if (!c.hasSecond) {
      probe.asked.second.clear();
      probe.second.reset();
    }
    const ProbeJudgement judgement = judge(probe);
    EXPECT_EQ(judgement.verdict, ProbeVerdict::oneTable) << c.what;
    const std::string headline = probeVerdictText(judgement, {}).substr(0, 60);
    EXPECT_EQ(headline.starts_with("One table is safe, as far as one mount can show, for up to"),
              c.isInPart)
        << headline;
    EXPECT_EQ(headline.starts_with("One table is safe, for up to"), !c.isInPart) << headline;
  }
}

TEST(Judge, KeepsOtherVerdictsWhole) {
  Probe probe = goodShare();
  probe.mount = Mount{"/a", "cifs", "//nas/x", "rw"};
  probe.asked.second.clear();
  probe.second.reset();
  probe.rows->kept = 55;
  const ProbeJudgement judgement = judge(probe);
  EXPECT_EQ(judgement.verdict, ProbeVerdict::ownTables);
  EXPECT_FALSE(judgement.isOfOneMount);
}

TEST(Judge, WholeSecondsMakeNoWrongClock) {
  Probe probe = goodShare();
  probe.times = FileTimes{1'000'000'000, -0.9, 0.1};
  EXPECT_TRUE(judge(probe).notes.empty());
}

TEST(Judge, SaysThatClientsMayStartInDifferentMinutes) {
  Probe probe = goodShare();
  probe.second->newFileLookedFor = probe.second->newFileListed = notSeen();
  const ProbeJudgement judgement = judge(probe);
  ASSERT_EQ(judgement.notes.size(), 2U);
  EXPECT_NE(judgement.notes[1].find("different minutes"), std::string::npos);
}

TEST(HelpfulOptions, AreThoseOfTheMountsKind) {
  const struct {
    const char* type;
    const char* options;
    Delays SecondMount::*late;
    const char* advice;  // its beginning; empty: none
  } cases[] = {
      {"nfs4", "rw", &SecondMount::newFileLookedFor, "lookupcache=positive: "},
      {"nfs", "rw", &SecondMount::removedFile, "actimeo=1: "},
      // As Linux lists what mount was given.
      {"nfs4", "rw,lookupcache=pos", &SecondMount::newFileLookedFor, ""},
      {"nfs4", "rw,lookupcache=none", &SecondMount::newFileLookedFor, ""},
      {"nfs4", "rw,noac,acregmin=0,acregmax=0", &SecondMount::newFileLookedFor, ""},
      {"nfs4", "rw,acregmin=1,acregmax=1,acdirmin=1,acdirmax=1", &SecondMount::removedFile, ""},
      {"nfs4", "rw,noac", &SecondMount::changedFile, ""},
      {"nfs4", "rw,acregmax=10", &SecondMount::changedFile, "actimeo=1: "},
      {"nfs4", "rw,lookupcache=pos", &SecondMount::changedFile, "actimeo=1: "},
      {"cifs", "rw,actimeo=1", &SecondMount::removedFile, ""},
      {"cifs", "rw,acdirmax=60,acregmax=1", &SecondMount::removedFile, ""},
      {"fuse.sshfs", "rw", &SecondMount::changedFile, "dir_cache=no,direct_io,attr_timeout=0,"},
      {"fuse.glusterfs", "rw", &SecondMount::newFileLookedFor, "negative-timeout=0: "},
      {"cifs", "rw", &SecondMount::removedFile, "actimeo=1: "},
      {"tmpfs", "rw", &SecondMount::removedFile, ""},
  };
  for (const auto& c : cases) {
    Probe probe = goodShare();
    probe.secondMountPoint = Mount{"/b", c.type, "x", c.options};
    EXPECT_TRUE(helpfulOptions(probe).empty()) << c.type;
    (*probe.second).*c.late = seenAfter(20);
    const auto options = helpfulOptions(probe);
    ASSERT_EQ(options.size(), *c.advice == '\0' ? 0U : 1U) << c.type;
    if (*c.advice != '\0') {
      EXPECT_TRUE(options[0].starts_with(c.advice)) << options[0];
    }
  }
}

TEST(HelpfulOptions, MayBeGivenAlreadyWhereTheSystemDoesNotListThem) {
  const struct {
    const char* type;
    const char* advice;  // its beginning
  } cases[] = {{"fuse.glusterfs", "negative-timeout=0, if not given already: a client"},
               {"fuse.sshfs",
                "dir_cache=no,direct_io,attr_timeout=0,entry_timeout=0, if not given already: "},
               {"nfs4", "lookupcache=positive: "}};
  for (const auto& c : cases) {
    Probe probe = goodShare();
    probe.asked.second.clear();
    probe.second.reset();
    probe.secondMountPoint.reset();
    probe.mount = Mount{"/a", c.type, "x:/y", "rw"};
    const auto options = helpfulOptions(probe);
    ASSERT_EQ(options.size(), 1U) << c.type;
    EXPECT_TRUE(options[0].starts_with(c.advice)) << options[0];
  }
}

}  // namespace
}  // namespace marrowbench::ctl
