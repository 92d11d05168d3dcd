#include "main/done_marker.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "helpers/printed.h"
#include "helpers/temp_folder.h"
#include "paths/done_path.h"
#include "paths/host_name.h"

namespace marrowbench {
namespace {

using test::readFile;
using test::writeFile;

constexpr const char* kMarker = "11.14. 22:13.20: done\n";

std::string markerPath(const FixedString& folder) {
  return std::string(folder.view()) + "/done__" + hostName().c_str();
}

std::string printedByMarking(const FixedString& settingsPath) {
  return test::printedBy([&] { writeDoneMarker(settingsPath); });
}

TEST(WriteDoneMarker, LeavesAStampedFileNamedAfterTheHost) {
  const test::TempFolder folder;
  EXPECT_EQ(printedByMarking(folder.file("run12.bst")), "");
  EXPECT_EQ(readFile(markerPath(folder.file("_run12_log")).c_str()), kMarker);
}

TEST(WriteDoneMarker, MakesAllMissingFolders) {
  const test::TempFolder folder;
  EXPECT_EQ(printedByMarking(folder.file("a/b/c/d/run12.bst")), "");
  EXPECT_EQ(readFile(markerPath(folder.file("a/b/c/d/_run12_log")).c_str()), kMarker);
}

TEST(WriteDoneMarker, ReplacesTheMarkerOfAnEarlierRun) {
  const test::TempFolder folder;
  std::filesystem::create_directory(folder.file("_run12_log").c_str());
  writeFile(markerPath(folder.file("_run12_log")).c_str(), "an older and longer marker\n\n");
  EXPECT_EQ(printedByMarking(folder.file("run12.bst")), "");
  EXPECT_EQ(readFile(markerPath(folder.file("_run12_log")).c_str()), kMarker);
}

TEST(WriteDoneMarker, TellsWhyTheFolderCannotBeMade) {
  const test::TempFolder folder;
  const FixedString doneFolder = folder.file("_run12_log");
  writeFile(doneFolder, "a file in the way");
  EXPECT_EQ(printedByMarking(folder.file("run12.bst")),
            "Unable to create 'Done'-Folder " + std::string(doneFolder) + ": File exists.\n");
  EXPECT_EQ(readFile(doneFolder), "a file in the way");
}

// The names are so long that the marker's path, cut at 500 characters, is the folder's.
TEST(WriteDoneMarker, WritesTheFileEvenWhenTheFolderCannotBeMade) {
  const test::TempFolder folder;
  std::string settingsPath = folder.path() + "/" + std::string(200, 'a') + "/";
  settingsPath += std::string(480 - settingsPath.size(), 'b') + "/";
  std::filesystem::create_directories(settingsPath);
  settingsPath += "name1234567890123.bst";
  const FixedString doneFolder = doneFolderOf(settingsPath.c_str());
  ASSERT_EQ(doneFolder.length(), 500U);
  writeFile(doneFolder, "a file in the way");
  EXPECT_EQ(printedByMarking(settingsPath.c_str()),
            "Unable to create 'Done'-Folder " + std::string(doneFolder) + ": File exists.\n");
  EXPECT_EQ(readFile(doneFolder), kMarker);
}

TEST(WriteDoneMarker, TellsWhyTheFileCannotBeWritten) {
  if (!test::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  const test::TempFolder folder;
  const std::string marker = markerPath(folder.file("_run12_log"));
  std::filesystem::create_directory(folder.file("_run12_log").c_str());
  std::filesystem::create_symlink("/dev/full", marker);
  EXPECT_EQ(printedByMarking(folder.file("run12.bst")),
            "Unable to write 'Done'-File " + marker + ": No space left on device.\n");
}

TEST(WriteDoneMarker, StaysSilentWhenTheFileCannotBeOpened) {
  const test::TempFolder folder;
  const std::string marker = markerPath(folder.file("_run12_log"));
  std::filesystem::create_directories(marker);
  EXPECT_EQ(printedByMarking(folder.file("run12.bst")), "");
  EXPECT_TRUE(std::filesystem::is_directory(marker));
}

}  // namespace
}  // namespace marrowbench
