#include "marrowctl/fleet/muster.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "helpers/temp_folder.h"
#include "marrowctl/fleet/ready_note.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

// An ssh that reaches everybody and starts nothing: the tests leave the ready files themselves.
class MusterTest : public testing::Test {
 protected:
  MusterTest() : before(std::getenv("PATH")) {
    const std::string ssh = temporary.path() + "/ssh";
    test::writeFile(ssh.c_str(), "#!/bin/sh\n");
    fs::permissions(ssh, fs::perms::owner_all);
    (void)setenv("PATH", (temporary.path() + ":" + before).c_str(), 1);
    options.recipe.hosts = {"c1"};
    options.recipe.folder = {temporary.path() + "/control", "run"};
    options.wanted.hosts = {"c1"};
    fs::create_directories(options.recipe.folder.path());
  }
  MusterTest(const MusterTest&) = delete;
  MusterTest& operator=(const MusterTest&) = delete;
  ~MusterTest() override { (void)setenv("PATH", before.c_str(), 1); }

  void arm() const {
    ReadyNote note;
    note.host = "c1";
    note.clockOffsetMs = 0;
    note.marrowbench = "9";
    test::writeFile(options.recipe.folder.ready("c1").c_str(), textOf(note, 0));
  }

  // The folder of the run is no folder for a while.
  void hide() const {
    const std::string path = options.recipe.folder.path();
    fs::rename(path, temporary.path() + "/aside");
    test::writeFile(path.c_str(), "");
  }
  void show() const {
    const std::string path = options.recipe.folder.path();
    fs::remove(path);
    fs::rename(temporary.path() + "/aside", path);
  }

  const test::TempFolder temporary;
  const std::string before;
  MusterOptions options;
  RecipeProcess engine;
};

TEST_F(MusterTest, AShareThatCannotBeReadForAWhileIsWaitedFor) {
  int looks = 0;
  std::string problem;
  const MusterOutcome outcome = muster(options, engine, [&](const MusterLook& look) {
    ++looks;
    if (looks == 1) hide();
    if (looks == 2) problem = look.problem;
    if (looks != 50) return;
    show();
    arm();
  });
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.ready, 1U);
  EXPECT_EQ(problem, options.recipe.folder.path() + ": Not a directory");
}

TEST_F(MusterTest, AShareThatCannotBeReadForAMinuteEndsIt) {
  int looks = 0;
  const MusterOutcome outcome = muster(options, engine, [&](const MusterLook&) {
    if (++looks == 1) hide();
  });
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.problems,
            std::vector<std::string>{options.recipe.folder.path() + ": Not a directory"});
  EXPECT_EQ(looks, 61);
}

}  // namespace
}  // namespace marrowbench::ctl
