#include "marrowctl/support/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

using test::TempFolder;

// A file that takes what a process prints.
class Output {
 public:
  explicit Output(const TempFolder& folder)
      : path(folder.file("output")),
        file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)) {}
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output() { (void)close(file); }

  const FixedString path;
  const int file;
};

// Real time: the unit tests' clock stands still.
ChildEnd endOf(ChildProcess& child) {
  for (int i = 0; i < 10000; ++i) {
    if (const auto end = child.end()) return *end;
    (void)usleep(1000);
  }
  ADD_FAILURE() << "it does not end";
  return {};
}

ChildCommand shell(const std::string& script, const Output& output) {
  return {"sh", {"-c", script}, output.file};
}

TEST(ChildProcess, TellsItsExitStatus) {
  const TempFolder folder;
  const Output output(folder);
  ChildProcess child;
  ASSERT_EQ(child.start(shell("exit 37", output)), 0);
  EXPECT_GT(child.id(), 0);
  const ChildEnd end = endOf(child);
  EXPECT_EQ(end.exitStatus, 37);
  EXPECT_EQ(end.signal, 0);
  EXPECT_TRUE(child.end()) << "it can be asked again";
}

TEST(ChildProcess, TellsTheSignalThatEndedIt) {
  const TempFolder folder;
  const Output output(folder);
  ChildProcess child;
  ASSERT_EQ(child.start(shell("exec sleep 100", output)), 0);
  EXPECT_FALSE(child.end());
  child.send(SIGINT);
  const ChildEnd end = endOf(child);
  EXPECT_EQ(end.signal, SIGINT);
  child.send(SIGINT);  // to nobody
}

// Reads from a pipe what is there, or its end, which comes when nobody holds its other one any
// more. Nothing: that takes longer than any machine needs for it.
std::optional<std::string> readFrom(int pipeEnd) {
  struct pollfd waiting {
    pipeEnd, POLLIN, 0
  };
  if (poll(&waiting, 1, 60'000) <= 0) return std::nullopt;
  char text[100];
  const ssize_t count = read(pipeEnd, text, sizeof text);
  return std::string(text, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
}

TEST(ChildProcess, ASignalReachesAllOfItsOwnSession) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  for (const int end : ends) (void)fcntl(end, F_SETFD, FD_CLOEXEC);
  ChildProcess child;
  ASSERT_EQ(child.start({"sh", {"-c", "sleep 600 & echo it runs; wait"}, ends[1], true}), 0);
  (void)close(ends[1]);
  EXPECT_EQ(getpgid(child.id()), child.id());
  EXPECT_EQ(getsid(child.id()), child.id()) << "a terminal would stop it when it asks something";
  EXPECT_EQ(readFrom(ends[0]), "it runs\n");
  child.send(SIGTERM);
  EXPECT_EQ(endOf(child).signal, SIGTERM);
  EXPECT_EQ(readFrom(ends[0]), "") << "the other one is still there";
  (void)close(ends[0]);
}

TEST(ChildProcess, BelongsToTheGroupOfThisProcessOtherwise) {
  const TempFolder folder;
  const Output output(folder);
  ChildProcess child;
  ASSERT_EQ(child.start(shell("exec sleep 100", output)), 0);
  EXPECT_EQ(getpgid(child.id()), getpgrp());
  child.send(SIGTERM);
  EXPECT_EQ(endOf(child).signal, SIGTERM);
}

TEST(ChildProcess, PutsBothOutputsIntoTheFileAndReadsNothing) {
  const TempFolder folder;
  const Output output(folder);
  ChildProcess child;
  ASSERT_EQ(child.start(shell("cat; echo out; echo error >&2", output)), 0);
  EXPECT_EQ(endOf(child).exitStatus, 0);
  EXPECT_EQ(test::readFile(output.path), "out\nerror\n");
}

TEST(ChildProcess, TellsWhyAProgramCannotBeStarted) {
  const TempFolder folder;
  const Output output(folder);
  test::writeFile(folder.file("text"), "no program");
  const struct {
    std::string program;
    int code;
  } cases[] = {{folder.path() + "/missing", ENOENT},
               {"no-program-of-this-name", ENOENT},
               {folder.path() + "/text", EACCES}};
  for (const auto& c : cases) {
    ChildProcess child;
    EXPECT_EQ(child.start({c.program, {}, output.file}), c.code) << c.program;
    EXPECT_FALSE(child.end()) << c.program;
  }
}

TEST(ChildProcess, AsksOneThatIsLeftBehindToEnd) {
  const TempFolder folder;
  const Output output(folder);
  {
    ChildProcess child;
    ASSERT_EQ(child.start(shell("trap 'echo asked; exit' TERM; echo ready;"
                                " while :; do sleep 0.01; done",
                                output)),
              0);
    for (int i = 0; i < 10000 && test::readFile(output.path) != "ready\n"; ++i) (void)usleep(1000);
  }
  for (int i = 0; i < 10000 && test::readFile(output.path) == "ready\n"; ++i) (void)usleep(1000);
  EXPECT_EQ(test::readFile(output.path), "ready\nasked\n");
}

}  // namespace
}  // namespace marrowbench::ctl
