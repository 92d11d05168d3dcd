#include "marrowctl/fleet/finished_note.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

TEST(FinishedNote, IsReadAsItIsWritten) {
  const test::TempFolder temporary;
  const ControlFolder folder{temporary.path(), "run"};
  std::filesystem::create_directory(folder.path());
  ASSERT_EQ(
      writeFinishedNote(folder, {"c1", "run", "2026-11-22T10:00:00+01:00", 143, "why \"so\""}), 0);
  const auto note = finishedNoteFrom(test::readFile(folder.finished("c1").c_str()));
  ASSERT_TRUE(note);
  EXPECT_EQ(note->host, "c1");
  EXPECT_EQ(note->run, "run");
  EXPECT_EQ(note->time, "2026-11-22T10:00:00+01:00");
  EXPECT_EQ(note->status, 143);
  EXPECT_EQ(note->message, "why \"so\"");
  ASSERT_EQ(writeFinishedNote(folder, {"c1", "run", "later", 0, ""}), 0);
  EXPECT_EQ(finishedNoteFrom(test::readFile(folder.finished("c1").c_str()))->time, "later");
  const auto files = std::filesystem::directory_iterator(folder.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "no draft stays behind";
}

TEST(FinishedNote, TellsWhyItCannotBeWritten) {
  EXPECT_EQ(writeFinishedNote({"/nowhere", "run"}, {"c1", "run", "", 0, ""}), ENOENT);
}

TEST(FinishedNote, RefusesWhatIsNone) {
  for (const char* const text :
       {"", "{}", "[]", R"({"schema":"marrowctl.finished/1"})",
        R"({"schema":"marrowctl.finished/1","status":"0"})", R"({"status":0})"}) {
    EXPECT_FALSE(finishedNoteFrom(text)) << text;
  }
}

}  // namespace
}  // namespace marrowbench::ctl
