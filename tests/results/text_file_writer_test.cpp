#include "results/text_file_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::exists;
using test::readFile;
using test::TempFolder;
using test::writeFile;

constexpr std::string_view kStamp = "11.14. 22:13.20: ";  // of a fresh fake clock

TEST(WriteTextFile, AppendsTheTextAndANewline) {
  const TempFolder folder;
  const FixedString path = folder.file("log.txt");
  EXPECT_EQ(writeTextFile(path, "one", false, false), 0);
  EXPECT_EQ(writeTextFile(path, "two\nthree\n", false, false), 0);
  EXPECT_EQ(readFile(path), "one\ntwo\nthree\n\n");
}

TEST(WriteTextFile, EmptyTextIsANewline) {
  const TempFolder folder;
  EXPECT_EQ(writeTextFile(folder.file("f"), {}, false, false), 0);
  EXPECT_EQ(readFile(folder.file("f")), "\n");
}

TEST(WriteTextFile, OverwritingLeavesOnlyTheNewLine) {
  const TempFolder folder;
  const FixedString path = folder.file("f");
  writeFile(path, "a longer text that stood there before");
  EXPECT_EQ(writeTextFile(path, "done", true, true), 0);
  EXPECT_EQ(readFile(path), "11.14. 22:13.20: done\n");
}

TEST(WriteTextFile, StampStandsBeforeTheFirstLineOnly) {
  const TempFolder folder;
  const FixedString path = folder.file("f");
  writeFile(path, "old\n");
  EXPECT_EQ(writeTextFile(path, "a\nb", false, true), 0);
  test::fakeClock().setSeconds(1'700'522'465);
  EXPECT_EQ(writeTextFile(path, {}, false, true), 0);
  EXPECT_EQ(readFile(path), "old\n11.14. 22:13.20: a\nb\n11.20. 23:21.05: \n");
}

TEST(WriteTextFile, FullLineGetsNoNewline) {
  const struct {
    std::size_t length;
    bool withTimestamp;
    std::size_t kept;
    bool newline;
  } cases[] = {{4999, false, 4999, true},
               {5000, false, 5000, false},
               {4982, true, 4982, true},
               {4983, true, 4983, false},
               {5000, true, 4983, false}};
  for (const auto& c : cases) {
    const TempFolder folder;
    const TextBuffer text(std::string(c.length, 'x'));
    EXPECT_EQ(writeTextFile(folder.file("f"), text, true, c.withTimestamp), 0);
    const std::string expected = std::string(c.withTimestamp ? kStamp : "") +
                                 std::string(c.kept, 'x') + (c.newline ? "\n" : "");
    EXPECT_EQ(readFile(folder.file("f")), expected) << c.length << c.withTimestamp;
  }
}

TEST(WriteTextFile, KeepsCountingAFailedOpenAsSuccess) {
  const TempFolder folder;
  for (const bool overwrite : {false, true}) {
    EXPECT_EQ(writeTextFile(folder.file("missing/f"), "x", overwrite, false), 0);
    EXPECT_EQ(writeTextFile(folder.file("."), "x", overwrite, false), 0);
  }
  EXPECT_FALSE(exists(folder.file("missing")));
}

TEST(WriteTextFile, TellsThatTheTextDidNotReachTheFile) {
  if (!exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  EXPECT_NE(writeTextFile("/dev/full", "x", false, false), 0);
  EXPECT_NE(writeTextFile("/dev/full", "x", true, false), 0);
}

// Write calls of this process so far, -1 where the system does not count them. Through stdio: the
// sanitizer that checks the objects of streams makes write calls of its own.
long writeCalls() {
  std::FILE* counters = std::fopen("/proc/self/io", "r");
  if (counters == nullptr) return -1;
  std::array<char, 100> line{};
  long count = -1;
  while (count < 0 && std::fgets(line.data(), line.size(), counters) != nullptr) {
    if (std::string_view(line.data()).starts_with("syscw: ")) count = std::atol(line.data() + 7);
  }
  (void)std::fclose(counters);
  return count;
}

TEST(WriteTextFile, WritesTheLongestLineAtOnce) {
  const TempFolder folder;
  const FixedString path = folder.file("f");
  const TextBuffer text(std::string(5000, 'x'));
  const long before = writeCalls();
  if (before < 0) GTEST_SKIP() << "the system does not count write calls";
  EXPECT_EQ(writeTextFile(path, text, false, false), 0);
  EXPECT_EQ(writeCalls(), before + 1);
}

}  // namespace
}  // namespace marrowbench
