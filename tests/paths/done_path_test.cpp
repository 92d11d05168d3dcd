#include "paths/done_path.h"

#include <gtest/gtest.h>

#include <string>

namespace marrowbench {
namespace {

TEST(DoneFolderOf, StandsBesideTheSettingsFile) {
  const struct {
    const char* path;
    const char* folder;
  } cases[] = {{"tests/run12.bst", "tests/_run12_log"},
               {"run12.bst", "_run12_log"},
               {"/run12.bst", "/_run12_log"},
               {"/data/v1.2/x.y.BST", "/data/v1.2/_x.y_log"},
               {"a/b/.bst", "a/b/__log"},
               {"x.bst", "_x_log"}};
  for (const auto& c : cases) EXPECT_EQ(doneFolderOf(c.path), c.folder) << c.path;
}

TEST(DoneFolderOf, IsCutAt500Characters) {
  const std::string folder = "/" + std::string(480, 'f') + "/";
  EXPECT_EQ(doneFolderOf((folder + "name123456.bst").c_str()),
            (folder + "_name123456_log").substr(0, 500).c_str());
  EXPECT_EQ(doneFolderOf((folder + "name12345678.bst").c_str()),
            (folder + "_name12345678_log").substr(0, 500).c_str());
}

TEST(DoneFileOf, IsNamedAfterTheHost) {
  EXPECT_EQ(doneFileOf("tests/run12.bst", "client7"), "tests/_run12_log/done__client7");
}

TEST(DoneFileOf, IsCutAt500Characters) {
  const std::string path = std::string(485, 'f') + "/a.bst";
  const std::string file = std::string(485, 'f') + "/_a_log/done__client7";
  EXPECT_EQ(doneFileOf(path.c_str(), "client7"), file.substr(0, 500).c_str());
}

}  // namespace
}  // namespace marrowbench
