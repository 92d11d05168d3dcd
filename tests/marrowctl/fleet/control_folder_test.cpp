#include "marrowctl/fleet/control_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

TEST(ControlFolder, NamesEachFileOfARun) {
  const ControlFolder folder{"/share/control", "monday"};
  EXPECT_EQ(folder.path(), "/share/control/monday");
  EXPECT_EQ(folder.settings(), "/share/control/monday/monday.bst");
  EXPECT_EQ(folder.settings(3), "/share/control/monday/monday-3.bst");
  EXPECT_EQ(folder.doneFolder(), "/share/control/monday/_monday_log");
  EXPECT_EQ(folder.doneFolder(2), "/share/control/monday/_monday-2_log");
  EXPECT_EQ(folder.published(), "/share/control/monday/published__monday");
  EXPECT_EQ(folder.published(2), "/share/control/monday/published__monday-2");
  EXPECT_EQ(folder.ready("c1"), "/share/control/monday/ready__c1");
  EXPECT_EQ(folder.finished("c1"), "/share/control/monday/finished__c1");
  EXPECT_EQ(folder.console("c1"), "/share/control/monday/console__c1");
}

TEST(ControlFolder, TakesSlashesAtTheEndOfTheFolder) {
  EXPECT_EQ((ControlFolder{"share//", "r"}).path(), "share/r");
  EXPECT_EQ((ControlFolder{"/", "r"}).path(), "/r");
  EXPECT_EQ((ControlFolder{".", "r"}).path(), "./r");
}

TEST(ControlFolder, KnowsWhatIsWithinIt) {
  const ControlFolder folder{"/share/control", "monday"};
  EXPECT_EQ(folder.within("/share/control/monday/sub/t.csv"), "sub/t.csv");
  for (const char* const path : {"/share/control/mondays/t.csv", "/share/control/monday", "t.csv"})
    EXPECT_EQ(folder.within(path), path);
}

TEST(ProblemOfShare, IsThatThereIsNoSuchFolder) {
  EXPECT_EQ(problemOfShare({"/", "monday"}), "") << "the run's own folder may be missing";
  EXPECT_EQ(problemOfShare({"/nowhere", "monday"}),
            "/nowhere: No such file or directory. Is the share mounted here?");
  EXPECT_EQ(problemOfShare({"/dev/null", "monday"}),
            "/dev/null: Not a directory. Is the share mounted here?");
}

TEST(MakeRunFolder, IsForAllWhoMayWorkInTheControlFolder) {
  const test::TempFolder temporary;
  const ControlFolder folder{temporary.path() + "/control", "monday"};
  EXPECT_EQ(makeRunFolder(folder), ENOENT);
  ASSERT_EQ(mkdir(folder.control.c_str(), 0700), 0);
  ASSERT_EQ(chmod(folder.control.c_str(), 0775), 0);
  const mode_t before = umask(077);
  EXPECT_EQ(makeRunFolder(folder), 0);
  EXPECT_EQ(umask(before), 077U) << "of what the process makes later";
  struct stat status {};
  ASSERT_EQ(stat(folder.path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0775U);
  EXPECT_EQ(makeRunFolder(folder), 0) << "it is there";
}

TEST(ProblemOfRunName, LetsPlainNamesPass) {
  for (const char* const name : {"a", "7", "monday", "2026-11-22_b.1"}) {
    EXPECT_EQ(problemOfRunName(name), "") << name;
  }
  EXPECT_EQ(problemOfRunName(std::string(100, 'x')), "");
}

TEST(ProblemOfRunName, RefusesWhatMeansSomethingInPathsAndLines) {
  for (const char* const name : {"", ".", "..", ".hidden", "-x", "_x", "a/b", "a b", "a;b",
                                 "[host]", "a\\b", "a'b", "\xC3\xA4"}) {
    EXPECT_NE(problemOfRunName(name), "") << name;
  }
  EXPECT_EQ(problemOfRunName(std::string(101, 'x')), "the name has more than 100 characters");
}

}  // namespace
}  // namespace marrowbench::ctl
