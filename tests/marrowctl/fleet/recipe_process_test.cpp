#include "marrowctl/fleet/recipe_process.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>

#include "helpers/environment_variable.h"
#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

std::ptrdiff_t filesIn(const std::string& folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

bool hasEnded(RecipeProcess& engine) {
  for (int look = 0; look < 6000; ++look) {
    if (engine.end()) return true;
    (void)usleep(10'000);
  }
  return false;
}

// A client that is armed by an ssh which waits until a file is gone.
class RecipeProcessTest : public ::testing::Test {
 protected:
  RecipeProcessTest() {
    const auto ssh = programs.file("ssh");
    test::writeFile(ssh, "#!/bin/sh\nwhile [ -e '" + held() + "' ]; do sleep 0.01; done\n");
    fs::permissions(std::string(ssh.view()), fs::perms::owner_all);
    test::writeFile(programs.file("held"), "");
    options.hosts = {"c1"};
    options.folder = {"/srv/control", "monday"};
  }

  [[nodiscard]] std::string held() const { return programs.path() + "/held"; }

  const test::TempFolder temporary, programs;
  const test::EnvironmentVariable temp{"TEMP", temporary.path().c_str()};
  const test::EnvironmentVariable path{"PATH", (programs.path() + ":/usr/bin:/bin").c_str()};
  RecipeOptions options;
};

TEST_F(RecipeProcessTest, RemovesItsFileWhenTheEngineHasEnded) {
  RecipeProcess engine;
  ASSERT_EQ(engine.start(Engine::ssh, options), "");
  EXPECT_EQ(filesIn(temporary.path()), 1);
  EXPECT_FALSE(engine.end());
  EXPECT_EQ(filesIn(temporary.path()), 1) << "the engine may still read it";
  fs::remove(held());
  ASSERT_TRUE(hasEnded(engine));
  EXPECT_EQ(filesIn(temporary.path()), 0);
  EXPECT_TRUE(engine.end());
}

}  // namespace
}  // namespace marrowbench::ctl
