#include "marrowctl/fleet/ready_note.h"

#include <gtest/gtest.h>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

ReadyNote someNote() {
  ReadyNote note;
  note.host = "c1";
  note.run = "monday";
  note.id = "0123456789abcdef";
  note.time = "2026-11-22T10:00:00+01:00";
  note.clockOffsetMs = -1500;
  note.pid = 4711;
  note.marrowctl = "9.1.01";
  note.marrowbench = "9.1.01";
  note.machine = {"Linux 6.1 x86_64", 8, 1 << 30, {{"/share", "nfs4", "server:/x", "rw,vers=4.1"}}};
  return note;
}

TEST(ReadyNote, ReadsWhatItWrites) {
  const std::string text = textOf(someNote(), 0);
  EXPECT_EQ(text.find('\n'), text.size() - 1) << "one line";
  const auto note = readyNoteFrom(text);
  ASSERT_TRUE(note);
  EXPECT_EQ(note->host, "c1");
  EXPECT_EQ(note->run, "monday");
  EXPECT_EQ(note->id, "0123456789abcdef");
  EXPECT_EQ(note->time, "2026-11-22T10:00:00+01:00");
  EXPECT_EQ(note->clockOffsetMs, -1500);
  EXPECT_EQ(note->pid, 4711);
  EXPECT_EQ(note->marrowctl, "9.1.01");
  EXPECT_EQ(note->marrowbench, "9.1.01");
  EXPECT_EQ(note->machine.kernel, "Linux 6.1 x86_64");
  EXPECT_EQ(note->machine.processors, 8);
  EXPECT_EQ(note->machine.memoryBytes, 1 << 30);
  EXPECT_EQ(note->machine.mounts, someNote().machine.mounts);
}

TEST(ReadyNote, NamesTheMountOfTheControlFolderFirst) {
  const test::TempFolder folder;
  const ReadyNote note = noteOfThisMachine({folder.path(), "monday"}, "9.1.01");
  EXPECT_EQ(note.run, "monday");
  const std::optional<Mount> mount = mountOf(folder.path());
  // Systems without a list of mounts have none.
  ASSERT_EQ(note.machine.mounts.empty(), !mount.has_value());
  if (mount) {
    EXPECT_EQ(note.machine.mounts.front(), *mount);
  }
}

TEST(ReadyNote, SaysWhatIsNotKnownYet) {
  ReadyNote note = someNote();
  note.clockOffsetMs.reset();
  note.marrowbench.reset();
  const std::string text = textOf(note, 0);
  EXPECT_NE(text.find("\"clockOffsetMs\":null"), std::string::npos) << text;
  EXPECT_NE(text.find("\"marrowbench\":null"), std::string::npos) << text;
  const auto read = readyNoteFrom(text);
  ASSERT_TRUE(read);
  EXPECT_FALSE(read->clockOffsetMs);
  EXPECT_FALSE(read->marrowbench);
}

TEST(ReadyNote, CoversALongerOne) {
  EXPECT_EQ(textOf(someNote(), 4000).size(), 4000U);
  EXPECT_TRUE(readyNoteFrom(textOf(someNote(), 4000)));
  const std::size_t length = textOf(someNote(), 0).size();
  EXPECT_EQ(textOf(someNote(), length), textOf(someNote(), 0));
  EXPECT_EQ(textOf(someNote(), length + 1).size(), length + 1);
}

TEST(ReadyNote, TakesAnyBytesInNames) {
  ReadyNote note = someNote();
  note.machine.mounts.front().point = "/\xFF";
  const auto read = readyNoteFrom(textOf(note, 0));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->machine.mounts.front().point, "/\xEF\xBF\xBD");
}

TEST(ReadyNote, RefusesWhatIsNone) {
  const std::string text = textOf(someNote(), 0);
  for (const std::string& other :
       {std::string(), std::string("{}"), std::string("[]"), std::string("7"),
        std::string(R"({"schema":"marrowctl.ready/2"})"), text.substr(0, text.size() / 2)}) {
    EXPECT_FALSE(readyNoteFrom(other)) << other;
  }
}

TEST(ReadyNote, OfTwoProcessesDiffer) {
  EXPECT_NE(noteOfThisMachine({"/", "r"}, "1").id, noteOfThisMachine({"/", "r"}, "1").id);
  EXPECT_FALSE(noteOfThisMachine({"/", "r"}, "1").host.empty());
}

}  // namespace
}  // namespace marrowbench::ctl
