#include "main/program.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/fake_clock.h"
#include "helpers/environment_variable.h"
#include "helpers/printed.h"
#include "helpers/temp_folder.h"
#include "paths/host_name.h"

namespace marrowbench {
namespace {

using test::countOf;
using test::exists;
using test::fakeClock;
using test::readFile;
using test::writeFile;

constexpr std::int64_t kNoon = 1'700'049'600;  // 15 November 2023, 12:00:00 UTC

const std::string kBanner =
    "----------------------------------------------------------------\n"
    "Marrowbench  9.1.01\n"
    "Copyright (c) 2026 the Marrowbench authors. MIT License.\n"
    "----------------------------------------------------------------\n";
const std::string kNote =
    "Note: A time sync for all your clients helps to start this test at the same time.\n\n";

// A test that runs no iteration and so touches no file but its log.
const std::string kIdle = "system;0;0;0;0;0;0;0;0;in.bin;out.bin;log.txt;res.csv;";

std::string loading(const std::string& path) {
  return "\n\n######## Loading/Waiting for settings file '" + path + "'  ########\n\n";
}

std::string opening(const std::string& stamp, const std::string& path, int configIndex,
                    const std::string& line) {
  return stamp + ": ___   " + path + "  __  " + std::to_string(configIndex) +
         "  ____________________________________________________\n" + std::string(18, ' ') + line +
         "\n";
}

std::string total(const std::string& stamp) {
  return std::string(18, ' ') + "Total time: 0ms ( data read/write only: 0ms)\n" + stamp +
         ": ___________________________\n\n";
}

std::string idleRows(const std::string& stamp, const std::string& path, int configIndex,
                     const std::string& line) {
  return opening(stamp, path, configIndex, line) + total(stamp);
}

struct EndlessWait {};

struct Outcome {
  int status = 0;
  std::string printed;
};

// The process's folder is a fresh one that holds a folder "tests".
class RunProgram : public testing::Test {
 protected:
  RunProgram() {
    std::filesystem::create_directory("tests");
    duringSleep([] {});
  }

  static Outcome run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "marrowbench");
    std::vector<char*> pointers;
    pointers.reserve(arguments.size());
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    Outcome outcome;
    outcome.printed = test::printedBy([&] {
      try {
        outcome.status = runProgram(pointers);
      } catch (const EndlessWait&) {
        ADD_FAILURE() << "waits for ever";
      }
    });
    return outcome;
  }

  // What others do during each sleep. A program that never stops sleeping is stopped.
  static void duringSleep(std::function<void()> action) {
    fakeClock().duringSleep = [action = std::move(action)] {
      if (fakeClock().sleeps.size() > 1000) throw EndlessWait();
      action();
    };
  }

  static bool isMarked(const std::string& name) {
    return exists(("tests/_" + name + "_log/done__" + hostName().c_str()).c_str());
  }

  // Somebody puts a settings file there at the given second.
  static void writeFileAt(std::int64_t seconds, const char* path, const std::string& content) {
    duringSleep([=] {
      if (fakeClock().seconds() >= seconds && !exists(path)) writeFile(path, content);
    });
  }

 private:
  test::WorkingFolder folder;
};

TEST_F(RunProgram, PrintsAWholeRunOfAFileThatIsThere) {
  const std::string line = "System;0;0;0;0;0;0;1;0;in.bin;out.bin;log.txt;res.csv;true";
  writeFile("tests/run12.bst", "# one test\n" + line + "\n");
  const Outcome outcome = run({"tests\\run12.bst"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed, kBanner + loading("tests/run12.bst") +
                                 "\n11.14. 22:13.20\nConfig loaded. \n" +
                                 opening("Nov 14. 22:13.20", "tests/run12.bst", 0, line) +
                                 "                  0 files copied ( 0.00 MiB. 0.00s. 0.000 MiB/s. "
                                 "Copy speed setting: 100% )\n"
                                 "                  Null data test: N/A\n"
                                 "                  Destination fileserver IP: \n"
                                 "                   \n" +
                                 total("Nov 14. 22:13.20") + "11.14. 22:13.20\n\n");
  EXPECT_TRUE(fakeClock().sleeps.empty());
  const std::string marker = std::string("tests/_run12_log/done__") + hostName().c_str();
  EXPECT_EQ(readFile(marker.c_str()), "11.14. 22:13.20: done\n");
}

TEST_F(RunProgram, WaitsForTheFileAndThenForTheMinute) {
  fakeClock().setSeconds(kNoon + 20);
  writeFileAt(kNoon + 26, "tests/run12.bst", kIdle + "true");
  const Outcome outcome = run({"tests/run12.bst"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed,
            kBanner + loading("tests/run12.bst") +
                "..\n11.15. 12:00.30\n"
                "Config loaded. Waiting for the next minute to start... 90sec \n\n" +
                kNote + idleRows("Nov 15. 12:01.02", "tests/run12.bst", 0, kIdle + "true") +
                "11.15. 12:01.02\n\n");
}

TEST_F(RunProgram, FileFoundLateInTheMinuteStartsOneMinuteLater) {
  const struct {
    int found;
    const char* shown;
    const char* start;
  } cases[] = {{44, "... 104sec ", "Nov 15. 12:01.02: ___ "},
               {46, "... 166sec ", "Nov 15. 12:02.02: ___ "}};
  for (const auto& c : cases) {
    fakeClock().setSeconds(kNoon + c.found - 5);
    std::filesystem::remove("tests/run12.bst");
    writeFileAt(kNoon + c.found, "tests/run12.bst", kIdle);
    const std::string printed = run({"tests/run12.bst"}).printed;
    EXPECT_EQ(countOf(printed, c.shown), 1U) << c.found << ": " << printed;
    EXPECT_EQ(countOf(printed, c.start), 1U) << c.found << ": " << printed;
  }
}

TEST_F(RunProgram, EveryMessageIsOnTheConsoleBeforeASleep) {
  fakeClock().setSeconds(kNoon + 20);
  std::vector<std::size_t> lengths;
  duringSleep([&] {
    struct stat console {};
    if (fstat(STDOUT_FILENO, &console) == 0) {
      lengths.push_back(static_cast<std::size_t>(console.st_size));
    }
    if (!exists("tests/run12.bst")) writeFile("tests/run12.bst", kIdle);
  });
  const std::string printed = run({"tests/run12.bst"}).printed;
  ASSERT_FALSE(lengths.empty());
  EXPECT_EQ(printed.substr(0, lengths.front()), kBanner + loading("tests/run12.bst") + ".");
  EXPECT_TRUE(printed.substr(0, lengths.back()).ends_with(kNote));
}

TEST_F(RunProgram, ChainedFileThatIsThereStartsAtOnce) {
  std::filesystem::create_directory("more");
  writeFile("tests/one1.bst", kIdle + "true\nmore\\two2.bst\n" + kIdle + "never read\n");
  writeFile("more/two2.bst", kIdle + "a\n" + kIdle + "b\n");
  const Outcome outcome = run({"tests/one1.bst"});
  const std::string stamp = "Nov 14. 22:13.20";
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed,
            kBanner + loading("tests/one1.bst") + "\n11.14. 22:13.20\nConfig loaded. \n" +
                idleRows(stamp, "tests/one1.bst", 0, kIdle + "true") + loading("more/two2.bst") +
                "\n11.14. 22:13.20\nConfig loaded. \n" +
                idleRows(stamp, "more/two2.bst", 0, kIdle + "a") +
                idleRows(stamp, "more/two2.bst", 1, kIdle + "b") + "11.14. 22:13.20\n\n");
  EXPECT_TRUE(fakeClock().sleeps.empty());
  EXPECT_TRUE(isMarked("one1"));
  EXPECT_FALSE(exists("more/_two2_log"));
}

TEST_F(RunProgram, ChainedFileThatIsWaitedForStartsAtItsMinute) {
  fakeClock().setSeconds(kNoon + 20);
  writeFile("tests/one1.bst", kIdle + "\ntests/two2.bst");
  writeFileAt(kNoon + 130, "tests/two2.bst", kIdle);
  const std::string printed = run({"tests/one1.bst"}).printed;
  EXPECT_EQ(printed, kBanner + loading("tests/one1.bst") + "\n11.15. 12:00.20\nConfig loaded. \n" +
                         idleRows("Nov 15. 12:00.20", "tests/one1.bst", 0, kIdle) +
                         loading("tests/two2.bst") + std::string(22, '.') +
                         "\n11.15. 12:02.10\n"
                         "Config loaded. Waiting for the next minute to start... 70sec \n\n" +
                         kNote + idleRows("Nov 15. 12:03.02", "tests/two2.bst", 0, kIdle) +
                         "11.15. 12:03.02\n\n");
}

TEST_F(RunProgram, RunsTheTestsInOrderWhateverTheirOutcome) {
  const std::string start = "posix;0;0;0;1;0;0;1;0;";
  const std::string end = ";log.txt;res.csv\n";
  writeFile("tests/a.bin", "content");
  writeFile("tests/run.bst", start + "none.bin;x.bin" + end +               // no source
                                 start + "a.bin;no/such/deep/er/x" + end +  // no folder
                                 start + "a.bin;b[cfgline].bin" + end +     //
                                 start + "b2.bin;c[cfgline].bin" + end);
  const Outcome outcome = run({"tests/run.bst"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(countOf(outcome.printed, "ERROR: Folder does not exists: tests/no/such/deep/er/\n"),
            1U);
  EXPECT_EQ(readFile("tests/b2.bin"), "content");
  EXPECT_EQ(readFile("tests/c3.bin"), "content");
}

TEST_F(RunProgram, LinesAreNumberedAnewInEachFile) {
  writeFile("tests/a.bin", "content");
  const std::string start = "posix;0;0;0;1;0;0;1;0;a.bin;[cfgNameID]_[cfgline].bin";
  const std::string end = ";log.txt;res.csv\n";
  writeFile("tests/one.bst", start + end + start + end + "tests/two.bst");
  writeFile("tests/two.bst", start + end);
  EXPECT_EQ(run({"tests/one.bst"}).status, 0);
  for (const char* name : {"tests/one_0.bin", "tests/one_1.bin", "tests/two_0.bin"}) {
    EXPECT_TRUE(exists(name)) << name;
  }
  EXPECT_FALSE(exists("tests/two_1.bin"));
}

TEST_F(RunProgram, MarkerIsLeftWithoutTestsOrWhenOneTestAsksForIt) {
  const struct {
    std::string content;
    bool isMarked;
  } cases[] = {{"", true},
               {"# nothing\n", true},
               {"nonsense\n", true},
               {kIdle + "true\n", true},
               {kIdle + "true\n" + kIdle + "\n", true},
               {kIdle + "\n" + kIdle + "true\n", true},
               {kIdle + "\n", false},
               {kIdle + "1\n" + kIdle + "false\n", false},
               {kIdle + "\nnonsense;true\n", false}};
  for (const auto& c : cases) {
    std::filesystem::remove_all("tests/_run12_log");
    writeFile("tests/run12.bst", c.content);
    EXPECT_EQ(run({"tests/run12.bst"}).status, 0);
    EXPECT_EQ(isMarked("run12"), c.isMarked) << c.content;
  }
}

TEST_F(RunProgram, MarkerOfAFileDoesNotComeFromTheFileBefore) {
  writeFile("tests/one.bst", kIdle + "true\n" + kIdle + "true\ntests/two.bst\n");
  writeFile("tests/two.bst", kIdle + "\ntests/three.bst\n");
  writeFile("tests/three.bst", "tests/four.bst\n");
  writeFile("tests/four.bst", kIdle + "\n");
  EXPECT_EQ(run({"tests/one.bst"}).status, 0);
  EXPECT_TRUE(isMarked("one"));
  EXPECT_FALSE(isMarked("two"));
  EXPECT_TRUE(isMarked("three"));  // a chain line alone is no test
  EXPECT_FALSE(isMarked("four"));
}

TEST_F(RunProgram, RefusedLinesAreShownAndTheOthersRun) {
  writeFile("tests/run12.bst", " nonsense\n" + kIdle + "\n");
  const Outcome outcome = run({"tests/run12.bst"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed, kBanner + loading("tests/run12.bst") +
                                 "\nError reading settings line ' nonsense' \n"
                                 "11.14. 22:13.20\nConfig loaded. \n" +
                                 idleRows("Nov 14. 22:13.20", "tests/run12.bst", 0, kIdle) +
                                 "11.14. 22:13.20\n\n");
}

TEST_F(RunProgram, FileThatCannotBeOpenedHasNoTestsAndIsMarked) {
  // A socket is there and no folder, and open() refuses it, also for root.
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string("tests/run12.bst").copy(address.sun_path, sizeof address.sun_path - 1);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  const auto* name = reinterpret_cast<const sockaddr*>(&address);
  ASSERT_EQ(bind(descriptor, name, sizeof address), 0);
  close(descriptor);

  const Outcome outcome = run({"tests/run12.bst"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed, kBanner + loading("tests/run12.bst") +
                                 "\n11.14. 22:13.20\nConfig loaded. \n11.14. 22:13.20\n\n");
  EXPECT_TRUE(isMarked("run12"));
}

TEST_F(RunProgram, MarkerThatCannotBeMadeIsShownAndTheRunGoesOn) {
  writeFile("tests/_one_log", "a file in the way");
  writeFile("tests/one.bst", "tests/two.bst");
  writeFile("tests/two.bst", "");
  const Outcome outcome = run({"tests/one.bst"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.printed, kBanner + loading("tests/one.bst") +
                                 "\n11.14. 22:13.20\nConfig loaded. \n"
                                 "Unable to create 'Done'-Folder tests/_one_log: File exists.\n" +
                                 loading("tests/two.bst") +
                                 "\n11.14. 22:13.20\nConfig loaded. \n11.14. 22:13.20\n\n");
  EXPECT_TRUE(isMarked("two"));
}

// Folders named with fewer than three characters never count as existing.
TEST_F(RunProgram, KeepsRefusingToMarkBelowAFolderWithAShortName) {
  std::filesystem::create_directory("ab");
  writeFile("ab/run12.bst", "");
  const std::string printed = run({"ab/run12.bst"}).printed;
  EXPECT_EQ(countOf(printed, "Unable to create 'Done'-Folder ab/_run12_log: "), 1U) << printed;
  EXPECT_FALSE(exists("ab/_run12_log"));
}

TEST_F(RunProgram, TableHoldsTwoHundredTests) {
  std::string content;
  for (int i = 0; i < 201; ++i) content += kIdle + "\n";
  writeFile("tests/run12.bst", content);
  const std::string printed = run({"tests/run12.bst"}).printed;
  EXPECT_EQ(countOf(printed, "Total time: "), 200U);
  EXPECT_EQ(
      countOf(printed,
              "\nError reading settings file 'tests/run12.bst', line 201: more than 200 tests, "
              "line ignored.\n"),
      1U);
}

TEST_F(RunProgram, RootFolderBeforeThePathIsPassedOver) {
  writeFile("tests/run12.bst", "");
  const Outcome outcome = run({"-ZZROOT", "other.bst", "tests/run12.bst"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(isMarked("run12"));
}

TEST_F(RunProgram, EndsWithStatusMinusOneWithoutArguments) {
  const Outcome outcome = run({});
  EXPECT_EQ(outcome.status, -1);
  EXPECT_EQ(outcome.printed, kBanner + "No commandline flags\n");
}

TEST_F(RunProgram, EndsWithStatusOneForAnotherEnding) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"run12.txt"}, {"-zzRoot", "run12.bst"}}) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.printed, kBanner + "Unknown commandline flags\n\n");
  }
}

TEST_F(RunProgram, StampsAreInTheLocalTimeOfTheEnvironment) {
  writeFile("tests/run12.bst", "");
  const test::EnvironmentVariable zone("TZ", "XYZ+3");
  const std::string printed = run({"tests/run12.bst"}).printed;
  EXPECT_EQ(countOf(printed, "11.14. 19:13.20\n"), 2U) << printed;
}

}  // namespace
}  // namespace marrowbench
