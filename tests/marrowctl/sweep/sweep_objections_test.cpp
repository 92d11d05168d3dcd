#include "marrowctl/sweep/sweep_objections.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "helpers/temp_folder.h"
#include "paths/host_name.h"
#include "support/clock.h"
#include "support/time_stamps.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;
using test::writeFile;

// By name, with "!" for errors.
std::string namesOf(const std::vector<Finding>& findings) {
  std::string names;
  for (const Finding& finding : findings) {
    EXPECT_FALSE(finding.message.empty() || finding.remedy.empty()) << finding.name;
    names += finding.name + (finding.severity == Severity::error ? "! " : " ");
  }
  return names;
}

std::string objections(const SweepOptions& options) {
  const SweepResult sweep = makeSweep(options);
  EXPECT_EQ(sweep.reason, "") << sweep.option;
  return sweep.files.empty() ? "refused" : namesOf(objectionsTo(sweep, options.neighbours));
}

// The folder of the sweeps is the current one.
class ObjectionsTo : public testing::Test {
 protected:
  static void expect(SweepOptions options, const char* names) {
    for (const char* output : {"", "sweep.bst"}) {
      options.output = output;
      EXPECT_EQ(objections(options), names) << output;
    }
    EXPECT_FALSE(fs::exists("sweep.bst"));
    EXPECT_FALSE(fs::exists("sweep_data"));
  }

  const test::WorkingFolder folder;
  const std::string host{hostName()};
};

TEST_F(ObjectionsTo, SourcesThatAreNotHere) {
  writeFile("here.bin", "x");
  expect({.kind = "read", .source = "none.bin"}, "source-missing ");
  expect({.kind = "read", .source = folder.path() + "/none.bin"}, "source-missing ");
  expect({.kind = "read", .source = "here.bin"}, "");
  expect({.kind = "read", .source = folder.path() + "/here.bin"}, "");
}

TEST_F(ObjectionsTo, FilesForWhichThereIsNoSpaceHere) {
  expect({.size = "1G", .iterations = "1000000"}, "space-short ");
  expect({.size = "64K"}, "");
}

TEST_F(ObjectionsTo, FoldersThatAreNotMade) {
  expect({.size = "64K", .dest = "a/b/c/"}, "folder-refused! ");
  expect({.size = "64K", .table = "a/b/c/results.csv"}, "folder-refused! ");
  expect({.size = "64K", .dest = "a/b/", .table = "c/d/results.csv"}, "");
  fs::create_directory("a");
  expect({.size = "64K", .dest = "a/b/c/"}, "");
}

TEST_F(ObjectionsTo, FilesThatAnsiCFindsHere) {
  const std::string date(fileStamp(currentSeconds()).view());
  fs::create_directories("sweep_data/" + host);
  const std::string path = "sweep_data/" + host + "/write_ansic_4K_64K_0_" + date + ".bin";
  const SweepOptions options{.method = "ansic", .chunk = "4K", .size = "64K"};
  EXPECT_EQ(objections(options), "");
  writeFile(path.c_str(), "x");
  EXPECT_EQ(objections(options), "exists-already! ");
}

TEST_F(ObjectionsTo, TablesAndLogsThatAreNoFilesHere) {
  fs::create_directory("folder");
  ASSERT_EQ(mkfifo("pipe", 0666), 0);
  expect({.size = "64K", .table = "folder"}, "table-is-special ");
  expect({.size = "64K", .log = "pipe"}, "table-is-special ");
  expect({.size = "64K", .log = "pipe.txt", .table = "folder.csv"}, "");
}

TEST_F(ObjectionsTo, CopiesOntoThemselvesThroughLinks) {
  writeFile(("copy_" + host + ".bin").c_str(), "x");
  fs::create_symlink("copy_" + host + ".bin", "link.bin");
  expect({.kind = "copy", .dest = "copy.bin", .source = "link.bin"}, "copies-onto-itself! ");
  expect({.kind = "copy", .dest = "other.bin", .source = "link.bin"}, "");
}

TEST_F(ObjectionsTo, EachKindOnce) {
  expect({.kind = "read", .chunk = "4K..64K", .source = "none.bin", .table = "a/b/c/results.csv"},
         "source-missing folder-refused! ");
}

TEST_F(ObjectionsTo, FilesAtTheirPlaceWhateverStandsThere) {
  writeFile("sweep.bst", "nonsense\n");
  EXPECT_EQ(objections({.size = "64K", .output = "sweep.bst"}), "");
  // More than 200 tests: the second file is not there either.
  EXPECT_EQ(
      objections({.chunk = "1K..64K", .size = "1K..64K", .wait = "1..16", .output = "./sweep.bst"}),
      "");
  fs::create_directory("far");
  EXPECT_EQ(objections({.size = "64K", .output = "far/sweep.bst"}), "");
  EXPECT_EQ(objections({.size = "64K", .dest = "x/y/", .output = "far/sweep.bst"}), "");
  // New folders of one level, and none, below folders of which the program knows little.
  for (const char* name : {"a", "ab"}) fs::create_directory(name);
  for (const char* output :
       {"sweep.bst", "./sweep.bst", "a/sweep.bst", "ab/sweep.bst", "far/sweep.bst"}) {
    for (const char* dest : {"x/", "x", "[host]/", "d.bin", "x/y/"}) {
      EXPECT_EQ(objections({.size = "64K", .dest = dest, .table = "t/r.csv", .output = output}), "")
          << output << " " << dest;
    }
  }
  EXPECT_EQ(objections({.size = "64K", .dest = "x/y/[host]/", .output = "far/sweep.bst"}),
            "folder-refused! ");
}

TEST_F(ObjectionsTo, WhatEachNeighbourReadsAndWrites) {
  SweepOptions options{.size = "64K", .output = folder.path() + "/n.bst"};
  options.neighbours = {"pc1", "pc2", "pc3"};
  options.kind = "write,copy";
  EXPECT_EQ(objections(options), "");
  // The second client's copy of what the third one writes.
  fs::create_directories("n_data/pc2");
  fs::create_directories("n_data/pc3");
  const std::string written = folder.path() + "/n_data/pc3/write_posix_1M_64K.bin";
  writeFile(written.c_str(), "x");
  fs::create_symlink(written, "n_data/pc2/copy_posix_1M_64K.bin");
  EXPECT_EQ(objections(options), "copies-onto-itself! ");
  // What all of them write: a third of it fits here.
  options.kind = "read";
  const auto free = static_cast<std::int64_t>(fs::space(".").available);
  options.iterations = std::to_string(std::max<std::int64_t>(free / (std::int64_t{2} << 30U), 1));
  options.size = "1G";
  EXPECT_EQ(objections(options), "space-short ");
}

}  // namespace
}  // namespace marrowbench::ctl
