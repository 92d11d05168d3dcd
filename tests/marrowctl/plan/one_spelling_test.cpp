#include "marrowctl/plan/one_spelling.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

TEST(OneSpelling, StartsAtTheRootAndTurnsNowhere) {
  const struct {
    const char* path;
    const char* spelling;
  } cases[] = {{"/a/b", "/a/b"},
               {"/a//b", "/a/b"},
               {"/a/./b", "/a/b"},
               {"/a/../b", "/b"},
               {"/a/b/", "/a/b"},
               {"/a/b/.", "/a/b"},
               {"/a/..", "/"},
               {"/", "/"},
               {"/../a", "/a"},
               {"/a/.b/c..", "/a/.b/c.."},
               {"", ""}};
  for (const auto& c : cases) EXPECT_EQ(oneSpelling(c.path), c.spelling) << c.path;
}

TEST(OneSpelling, StartsRelativePathsInTheCurrentFolder) {
  const test::WorkingFolder folder;
  const std::string here = std::filesystem::current_path().string();
  EXPECT_EQ(oneSpelling("d.bin"), here + "/d.bin");
  EXPECT_EQ(oneSpelling("./d.bin"), here + "/d.bin");
  EXPECT_EQ(oneSpelling("x/../d.bin"), here + "/d.bin");
  EXPECT_EQ(oneSpelling("."), here);
}

}  // namespace
}  // namespace marrowbench::ctl
