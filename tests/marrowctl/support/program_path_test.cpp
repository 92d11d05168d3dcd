#include "marrowctl/support/program_path.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "helpers/environment_variable.h"
#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;
using test::EnvironmentVariable;
using test::TempFolder;

// Folders "a" and "b", and programs in them.
class ProgramPath : public testing::Test {
 protected:
  ProgramPath() {
    for (const char* name : {"a", "b"}) fs::create_directory(path(name));
  }

  [[nodiscard]] std::string path(const std::string& name) const {
    return folder.path() + "/" + name;
  }

  void make(const std::string& name, bool isProgram = true) const {
    test::writeFile(folder.file(name), "");
    fs::permissions(path(name), isProgram ? fs::perms::owner_all : fs::perms::owner_read);
  }

  TempFolder folder;
};

TEST_F(ProgramPath, IsTheFirstInPath) {
  make("a/one", false);
  make("b/one");
  fs::create_directory(path("a/two"));
  make("b/two");
  const EnvironmentVariable variable("PATH", (path("a") + ":" + path("b")).c_str());
  EXPECT_EQ(pathOfProgram("one"), path("b/one")) << "not what can't be run";
  EXPECT_EQ(pathOfProgram("two"), path("b/two")) << "not a folder";
  EXPECT_EQ(pathOfProgram("three"), "");
  EXPECT_EQ(pathOfProgram("./one"), "./one");
}

TEST_F(ProgramPath, OfANeighbourIsBesideItThenBesideItsTargetThenInPath) {
  make("b/ctl");
  make("b/bench");
  const EnvironmentVariable nowhere("PATH", path("a").c_str());
  EXPECT_EQ(pathOfNeighbour(path("b/ctl"), "bench"), path("b/bench"));
  fs::create_symlink(path("b/ctl"), path("a/ctl"));
  const std::string target = fs::canonical(path("b")).string() + "/bench";
  EXPECT_EQ(pathOfNeighbour(path("a/ctl"), "bench"), target);
  EXPECT_EQ(pathOfNeighbour("ctl", "bench"), target) << "called by its name alone";
  make("a/bench");
  EXPECT_EQ(pathOfNeighbour(path("a/ctl"), "bench"), path("a/bench"));
  EXPECT_EQ(pathOfNeighbour(path("b/ctl"), "other"), "");
  make("a/other");
  EXPECT_EQ(pathOfNeighbour(path("b/ctl"), "other"), path("a/other"));
}

}  // namespace
}  // namespace marrowbench::ctl
