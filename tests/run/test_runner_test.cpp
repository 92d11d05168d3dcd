#include "run/test_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "fakes/fake_clock.h"
#include "fakes/fake_platform.h"
#include "helpers/printed.h"
#include "helpers/system_limits.h"
#include "helpers/temp_folder.h"
#include "run/result_table.h"
#include "run/test_data.h"

namespace marrowbench {
namespace {

using test::countOf;
using test::fakeClock;

constexpr const char* kStamp = "Nov 14. 22:13.20: ";

std::string row(const std::string& text) { return std::string(18, ' ') + text + "\n"; }

// A test line for descriptors with small memory.
class TestRun : public testing::Test {
 protected:
  TestRun() {
    config.method = Method::posix;
    config.iterations = 1;
    config.settingsPath = folder.file("run12.bst");
    config.settingsLine.assignBytes("posix;...");
    config.parameters.parameters.chunkSize = 4096;
    config.parameters.parameters.fileSize = 8192;
  }

  std::string run(std::int32_t configIndex = 0) {
    testing::internal::CaptureStderr();
    std::string text =
        test::printedBy([&] { result = TestRunner::run(config, memory, configIndex, lostRows); });
    told = testing::internal::GetCapturedStderr();
    return text;
  }

  // What stands between the opening and the closing rows.
  std::string reportOf(std::int32_t configIndex = 0) {
    const std::string text = run(configIndex);
    const std::size_t begin = text.find("posix;...\n") + 10;
    return text.substr(begin, text.find("                  Total time") - begin);
  }

  void copyOf(std::string_view content) {
    config.sourceTemplate = folder.file("source");
    config.destTemplate = folder.file("dest");
    test::writeFile(config.sourceTemplate, content);
  }

  [[nodiscard]] std::string path(const char* name) const { return folder.path() + "/" + name; }
  [[nodiscard]] std::string table() const { return test::readFile(folder.file("res.csv")); }

  test::TempFolder folder;
  TestConfig config;
  std::vector<std::byte> room = std::vector<std::byte>(65536);
  std::byte* memory = room.data();
  bool result = false;
  LostRows lostRows;
  std::string told;  // on standard error
};

TEST_F(TestRun, ReportsAWriteTestOnConsoleLogAndTable) {
  config.destTemplate = folder.file("out.bin");
  config.logTemplate = folder.file("log.txt");
  config.resultsTemplate = folder.file("res.csv");
  fakeClock().msPerReading = 4;
  const std::string text = run();
  EXPECT_EQ(text, kStamp + ("___   " + path("run12.bst")) + "  __  0  " + std::string(52, '_') +
                      "\n" + row("posix;...") +
                      row("1 files written ( 0.01 MiB. 0.00s. 1.953 MiB/s. "
                          "Transfer speed setting: 100% )") +
                      row("Null data test: N/A") + row("Destination fileserver IP: ") + row(" ") +
                      row("Total time: 12ms ( data read/write only: 4ms)") + kStamp +
                      std::string(27, '_') + "\n\n");
  EXPECT_TRUE(result);
  EXPECT_EQ(test::readFile(folder.file("log.txt")), text);
  const ResultLines lines = buildResultLines(config, config.parameters, ',');
  EXPECT_EQ(table(), std::string(lines.header.view()) +
                         "Nov 14. 22:13.20,Posix,Write,,,0,4096,4,-1,8,1,0,MEMORY,," +
                         path("out.bin") + ",,,,4,2000,100,,,,,,,,,,,,,\n\n");
  EXPECT_FALSE(test::exists(folder.file("res.csv_lock.txt")));
}

TEST_F(TestRun, ReportsAReadTest) {
  config.sourceTemplate = folder.file("in.bin");
  config.resultsTemplate = folder.file("res.csv");
  test::writeFile(config.sourceTemplate, std::string(8192, 'x'));
  fakeClock().msPerReading = 4;
  EXPECT_EQ(reportOf(), row("1 files read ( 0.01 MiB. 0.00s. 1.953 MiB/s. "
                            "Transfer speed setting: 100% )") +
                            row("Null data test: Ok") + row(" "));
  EXPECT_NE(table().find(",Posix,Read,"), std::string::npos);
}

TEST_F(TestRun, ReportsACopyTest) {
  copyOf(std::string(8192, 'x'));
  fakeClock().msPerReading = 4;
  EXPECT_EQ(reportOf(),
            row("1 files copied ( 0.01 MiB. 0.00s. 1.953 MiB/s. Copy speed setting: 100% )") +
                row("Null data test: Ok") + row("Destination fileserver IP: ") + row(" "));
}

TEST_F(TestRun, OpensWithTheNumberAndTheNarrowedLine) {
  config.iterations = 0;
  config.settingsLine = u"a\x0142\x2043";
  const std::string text = run(7);
  EXPECT_NE(text.find("run12.bst  __  7  ____"), std::string::npos);
  EXPECT_NE(text.find(row("aBC")), std::string::npos);

  config.settingsLine.assignBytes(std::string(1000, 'x'));
  EXPECT_NE(run().find("\n" + row(std::string(482, 'x'))), std::string::npos);
}

TEST_F(TestRun, RunsNoIterationForZeroAndBelow) {
  config.destTemplate = folder.file("out.bin");
  config.resultsTemplate = folder.file("res.csv");
  for (const std::int32_t iterations : {0, -3}) {
    config.iterations = iterations;
    EXPECT_EQ(reportOf(), "") << iterations;
    EXPECT_NE(run().find("( data read/write only: 0ms)\n"), std::string::npos);
    EXPECT_TRUE(result);
    EXPECT_FALSE(test::exists(config.destTemplate));
    EXPECT_FALSE(test::exists(config.resultsTemplate));
  }
}

TEST_F(TestRun, ExpandsTheTemplatesForEveryIteration) {
  config.iterations = 2;
  config.destTemplate = folder.file("[cfgLine]_[iter].bin");
  config.logTemplate = folder.file("log[iter].txt");
  config.resultsTemplate = folder.file("res[iter].csv");
  (void)run(5);
  for (const char* name : {"5_0.bin", "5_1.bin", "log0.txt", "log1.txt", "res0.csv", "res1.csv"}) {
    EXPECT_TRUE(test::exists(folder.file(name))) << name;
  }
  EXPECT_EQ(config.destTemplate, folder.file("[cfgLine]_[iter].bin"));
  EXPECT_EQ(config.dest, folder.file("5_1.bin"));
  EXPECT_EQ(config.logPath, folder.file("log1.txt"));
  EXPECT_EQ(config.resultsPath, folder.file("res1.csv"));
}

TEST_F(TestRun, KeepsExpandingTheTestedPathsOnceMore) {
  // The settings file's folder is put in after "[iter]" is replaced, so its own "[iter]" is left.
  const FixedString shown = folder.file("x[iter]/run.bst");
  config.settingsPath = shown;
  std::filesystem::create_directories(path("x0"));
  std::filesystem::create_directories(path("x[iter]"));
  config.destTemplate = "[cfgPath]out.bin";
  (void)run();
  EXPECT_EQ(config.dest, folder.file("x[iter]/out.bin"));
  EXPECT_TRUE(test::exists(folder.file("x0/out.bin")));
  EXPECT_FALSE(test::exists(config.dest));

  config.sourceTemplate = "[cfgPath]out.bin";
  config.destTemplate = "[cfgPath]copy.bin";
  (void)run();
  EXPECT_TRUE(test::exists(folder.file("x0/copy.bin")));

  config.destTemplate = "";
  EXPECT_NE(reportOf().find("1 files read"), std::string::npos);
}

TEST_F(TestRun, KeepsTheCacheRowInTheLogOfTheIterationBefore) {
  config.iterations = 2;
  config.parameters.parameters.emptyCacheMode = 4;
  config.destTemplate = folder.file("out.bin");
  config.logTemplate = folder.file("log[iter].txt");
  (void)run();
  EXPECT_EQ(countOf(test::readFile(folder.file("log0.txt")), "Empty Cache mode 4"), 2U);
  EXPECT_EQ(countOf(test::readFile(folder.file("log1.txt")), "Empty Cache mode 4"), 0U);
}

TEST_F(TestRun, WritesTheDataOfConfigurationAndIteration) {
  config.iterations = 4;
  config.parameters.parameters.fileSize = 5000;
  config.destTemplate = folder.file("[cfgLine]_[iter]");
  for (const std::int32_t index : {0, 2}) {
    (void)run(index);
    for (std::int32_t i = 0; i < 4; ++i) {
      std::string data(5000, '\0');
      fillTestData(std::as_writable_bytes(std::span(data)), testDataSeed(index, i));
      const std::string name = std::to_string(index) + "_" + std::to_string(i);
      EXPECT_EQ(test::readFile(folder.file(name)), data) << name;
    }
  }
  EXPECT_EQ(room[5000], std::byte{0}) << "only what is written";
  const std::string first = test::readFile(folder.file("0_0"));
  EXPECT_NE(first, std::string(5000, first.front())) << "seed 0 gives data too";
}

TEST_F(TestRun, WritesAnEmptyFile) {
  config.parameters.parameters.fileSize = 0;
  config.destTemplate = folder.file("out.bin");
  EXPECT_NE(reportOf().find("1 files written ( 0.00 MiB."), std::string::npos);
  EXPECT_TRUE(test::exists(config.destTemplate));
  EXPECT_EQ(room[0], std::byte{0});
}

TEST_F(TestRun, ReadsWhenBothPathsAreMemory) {
  EXPECT_EQ(reportOf(),
            row(std::string("ERROR: Unable to find source file '' ! ") + std::strerror(ENOENT)) +
                row("Null data test: N/A") + row(" "));
}

TEST_F(TestRun, TakesMemoryInAnyCaseForTheSource) {
  config.sourceTemplate = "MeMorY";
  config.destTemplate = folder.file("out.bin");
  EXPECT_NE(reportOf().find("1 files written"), std::string::npos);
}

TEST_F(TestRun, KeepsAskingForTheFolderOfADestinationNamedMemory) {
  // The parser stores "MEMORY" as an empty path; only a placeholder brings the word this far.
  config.destTemplate = "memory";
  EXPECT_NE(run().find("ERROR: Folder does not exists: \n"), std::string::npos);
  EXPECT_FALSE(result);
}

TEST_F(TestRun, AllocatesNoMemoryForACopy) {
  copyOf("0123456789");
  memory = nullptr;
  EXPECT_NE(reportOf().find("1 files copied"), std::string::npos);
  EXPECT_EQ(memory, nullptr);
}

TEST_F(TestRun, ReportsThatThereIsNoMemory) {
  if (!test::kMallocCanFail) GTEST_SKIP() << "a failed malloc ends a process with this sanitizer";
  memory = nullptr;
  config.iterations = 2;
  config.resultsTemplate = folder.file("res.csv");
  config.destTemplate = folder.file("out.bin");
  const std::string error =
      std::string("ERROR: Unable to allocate memory buffer! ") + std::strerror(ENOMEM);
  std::string report;
  {
    const test::AddressSpaceLimit limit;
    report = reportOf();
  }
  EXPECT_EQ(countOf(report, row(error) + row("Null data test: N/A")), 2U) << report;
  EXPECT_EQ(countOf(table(), "," + error + ",,0,"), 2U) << table();
  EXPECT_FALSE(test::exists(config.destTemplate));
  EXPECT_EQ(memory, nullptr);
  EXPECT_TRUE(result);
}

TEST_F(TestRun, AllocatesMemoryOnceForAllTests) {
  config.iterations = 0;
  config.destTemplate = folder.file("out.bin");
  std::byte* const before = memory;
  run();
  EXPECT_EQ(memory, before) << "there was one";

  memory = nullptr;
  run();
  const std::unique_ptr<std::byte, decltype(&std::free)> allocated(memory, &std::free);
  ASSERT_NE(allocated, nullptr) << "also without iterations, and after tests that had none";
  run();
  EXPECT_EQ(memory, allocated.get());
  // Both ends of 1 GiB; nothing in between is touched.
  *memory = *(memory + kMaxFileSize - 1) = std::byte{1};
}

TEST_F(TestRun, MakesTheMemoryThatATestTouchesPresentAndNoMore) {
  config.destTemplate = folder.file("out.bin");
  run();
  config.sourceTemplate = folder.file("in.bin");
  config.destTemplate = "";
  test::writeFile(config.sourceTemplate, std::string(5000, 'x'));
  run();
  config.sourceTemplate = folder.file("missing.bin");
  run();
  const auto& populated = test::fakePlatform().populated;
  ASSERT_EQ(populated.size(), 2U);
  EXPECT_EQ(populated[0].memory, memory);
  EXPECT_EQ(populated[0].size, 8192U) << "the file size of the write test";
  EXPECT_EQ(populated[1].size, 5000U) << "the size of the file to read";
}

TEST_F(TestRun, MakesNoMemoryPresentForASizeThatReadsNothingIn32Bits) {
  config.sourceTemplate = folder.file("in.bin");
  test::writeFile(config.sourceTemplate, "");
  for (const std::uintmax_t gib : {3U, 4U}) {
    std::filesystem::resize_file(config.sourceTemplate.c_str(), gib << 30);
    run();
    EXPECT_TRUE(test::fakePlatform().populated.empty()) << gib << " GiB";
  }
}

TEST_F(TestRun, TellsWhereNullsWereFound) {
  copyOf(std::string(8192, 'x') + std::string(4096, '\0'));
  config.resultsTemplate = folder.file("res.csv");
  EXPECT_NE(reportOf().find(row("Null data test: Null found before file position 11988")),
            std::string::npos);
  EXPECT_NE(table().find(",,11988,0,"), std::string::npos) << table();
}

TEST_F(TestRun, KeepsSilentAboutACopySourceThatIsMissingOrEmpty) {
  copyOf("");
  config.resultsTemplate = folder.file("res.csv");
  const std::string report =
      row("0 files copied ( 0.00 MiB. 0.00s. 0.000 MiB/s. Copy speed setting: 100% )") +
      row("Null data test: N/A") + row("Destination fileserver IP: ") + row(" ");
  for (const char* source : {"source", "missing", "."}) {
    config.sourceTemplate = folder.file(source);
    EXPECT_EQ(reportOf(), report) << source;
  }
  EXPECT_EQ(countOf(table(), "/dest,,,,0,-9223372036854775808,100,"), 3U) << table();
}

TEST_F(TestRun, PrintsAnErrorInsteadOfTheSummaryAndNeverRewritesIt) {
  config.sourceTemplate = folder.file("copied Copy x");
  config.resultsTemplate = folder.file("res.csv");
  const std::string error = "ERROR: Unable to find source file '" + path("copied Copy x") + "' ! " +
                            std::strerror(ENOENT);
  EXPECT_EQ(reportOf(), row(error) + row("Null data test: N/A") + row(" "));
  EXPECT_NE(table().find("," + error + ",,0,"), std::string::npos) << table();
}

TEST_F(TestRun, GoesOnAfterAFailedIteration) {
  config.iterations = 2;
  config.method = Method::ansiC;
  config.destTemplate = folder.file("out[iter].bin");
  test::writeFile(folder.file("out0.bin"), "there already");
  const std::string report = reportOf();
  EXPECT_NE(report.find("ERROR: Unable to open file '" + path("out0.bin")), std::string::npos);
  EXPECT_NE(report.find("1 files written"), std::string::npos);
  EXPECT_TRUE(result);
}

TEST_F(TestRun, RunsNothingForSystemAndWinApi) {
  config.destTemplate = folder.file("new/out.bin");
  config.resultsTemplate = folder.file("res.csv");
  for (const Method method : {Method::system, Method::winApi}) {
    config.method = method;
    EXPECT_EQ(reportOf(), row("0 files written ( 0.00 MiB. 0.00s. 0.000 MiB/s. "
                              "Transfer speed setting: 100% )") +
                              row("Null data test: N/A") + row("Destination fileserver IP: ") +
                              row(" "));
    EXPECT_FALSE(test::exists(config.destTemplate));
    EXPECT_TRUE(test::exists(folder.file("new"))) << "the folder is made all the same";
  }
  EXPECT_EQ(countOf(table(), "out.bin,,,,0,-9223372036854775808,100,"), 2U) << table();
}

// A copy's first pause is used to change what the next iteration does.
TEST_F(TestRun, KeepsTheOutcomeOfTheIterationBeforeForAMethodThatRunsNothing) {
  config.iterations = 2;
  config.resultsTemplate = folder.file("res.csv");
  config.parameters.parameters.chunkWait = 3;
  copyOf(std::string(10000, 'x'));
  const auto thenSystem = [this] { config.method = Method::system; };

  fakeClock().duringSleep = thenSystem;
  std::string report = reportOf();
  EXPECT_NE(report.find(row("1 files copied ( 0.01 MiB. 0.00s. 1.060 MiB/s. "
                            "Copy speed setting: 100% )") +
                        row("Null data test: Ok")),
            std::string::npos)
      << report;
  EXPECT_NE(report.find(row("0 files copied ( 0.00 MiB. 0.00s. 0.000 MiB/s. "
                            "Copy speed setting: 100% )") +
                        row("Null data test: Ok")),
            std::string::npos)
      << report;
  EXPECT_EQ(countOf(table(), "/dest,,,0,"), 2U) << table();

  config.method = Method::posix;
  fakeClock().duringSleep = [this, thenSystem] {
    thenSystem();
    std::filesystem::resize_file(config.source.c_str(), 5000);
  };
  report = reportOf();
  EXPECT_EQ(countOf(report, "ERROR: Unable to read file '" + path("source")), 2U) << report;
}

TEST_F(TestRun, SumsTheDataTimeAndResetsEachIterationsStatistics) {
  config.iterations = 3;
  config.parameters.parameters.chunkWait = 10;
  config.parameters.parameters.stats.waitMs = 10;
  config.parameters.parameters.stats.stepBytes = 4096;
  config.destTemplate = folder.file("out.bin");
  fakeClock().msPerReading = 5;
  const std::string text = run();
  EXPECT_EQ(countOf(text,
                    "1 files written ( 0.01 MiB. 0.02s. 0.312 MiB/s. "
                    "Transfer speed setting: 20% )"),
            3U)
      << text;
  EXPECT_NE(text.find(row("Total time: 95ms ( data read/write only: 75ms)")), std::string::npos)
      << text;
}

TEST_F(TestRun, MakesTwoMissingFoldersOfTheDestination) {
  config.destTemplate = folder.file("a/b/out.bin");
  EXPECT_NE(reportOf().find("1 files written"), std::string::npos);
  EXPECT_TRUE(test::exists(config.destTemplate));
}

TEST_F(TestRun, EndsWhenThreeFoldersOfTheDestinationAreMissing) {
  config.iterations = 2;
  config.destTemplate = folder.file("a/b/c/out.bin");
  config.resultsTemplate = folder.file("res.csv");
  const std::string text = run();
  EXPECT_TRUE(
      text.ends_with("posix;...\n" + row("ERROR: Folder does not exists: " + path("a/b/c/"))))
      << text;
  EXPECT_FALSE(result);
  EXPECT_FALSE(test::exists(folder.file("a")));
  EXPECT_EQ(table(), "");
}

TEST_F(TestRun, GoesOnWhenTheFolderOfTheDestinationCantBeMade) {
  test::writeFile(folder.file("file"), "");
  config.destTemplate = folder.file("file/out.bin");
  EXPECT_NE(reportOf().find("ERROR: Unable to open file '" + path("file/out.bin") + "' ! " +
                            std::strerror(ENOTDIR)),
            std::string::npos);
  EXPECT_TRUE(result);
}

TEST_F(TestRun, MakesTwoMissingFoldersOfTheTable) {
  config.destTemplate = folder.file("out.bin");
  config.resultsTemplate = folder.file("a/b/res.csv");
  (void)run();
  EXPECT_EQ(countOf(test::readFile(config.resultsTemplate), ",Posix,"), 1U);
}

TEST_F(TestRun, GoesOnWhenThreeFoldersOfTheTableAreMissing) {
  config.destTemplate = folder.file("out.bin");
  config.resultsTemplate = folder.file("a/b/c/res.csv");
  const std::string report = reportOf();
  EXPECT_TRUE(report.ends_with(
      row("Destination fileserver IP: ") + row("ERROR: Folder does not exists: " + path("a/b/c/")) +
      row("ERROR: Unable to write excel file as it is still locked." + path("a/b/c/res.csv")) +
      row(" ")))
      << report;
  EXPECT_TRUE(result);
  EXPECT_FALSE(test::exists(folder.file("a")));
}

TEST_F(TestRun, WritesTheHeaderOnceForAllRows) {
  config.iterations = 2;
  config.destTemplate = folder.file("out.bin");
  config.resultsTemplate = folder.file("res.csv");
  (void)run(0);
  (void)run(1);
  EXPECT_TRUE(table().starts_with("Date,Method,"));
  EXPECT_EQ(countOf(table(), "Date,Method,"), 1U);
  EXPECT_EQ(countOf(table(), ",\n\nNov 14."), 3U) << "an empty line between two rows";
  EXPECT_TRUE(table().ends_with(",\n\n"));
}

TEST_F(TestRun, KeepsAnEmptyTableWithoutHeader) {
  config.destTemplate = folder.file("out.bin");
  config.resultsTemplate = folder.file("res.csv");
  test::writeFile(config.resultsTemplate, "");
  (void)run();
  EXPECT_TRUE(table().starts_with("Nov 14.")) << table();
}

TEST_F(TestRun, PrintsNoRowOfATableWithoutPath) {
  config.destTemplate = folder.file("out.bin");
  (void)run();
  EXPECT_TRUE(fakeClock().sleeps.empty());
  const auto entries = std::filesystem::directory_iterator(folder.path());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "the file written";
}

TEST_F(TestRun, TellsARowThatCantBeWrittenOnStandardErrorOnly) {
  config.destTemplate = folder.file("out.bin");
  config.logTemplate = folder.file("log.txt");
  config.resultsTemplate = folder.fileOfLength(249);
  const std::string report = reportOf();
  EXPECT_TRUE(report.ends_with(row("Destination fileserver IP: ") + row(" "))) << report;
  EXPECT_EQ(countOf(test::readFile(config.logTemplate), "excel"), 0U);
  EXPECT_EQ(told, "marrowbench: row lost: " + std::string(config.resultsTemplate) + ": " +
                      std::strerror(ENAMETOOLONG) + "\n");
  EXPECT_TRUE(result);
}

TEST_F(TestRun, TellsNothingOfAFolderInPlaceOfATable) {
  config.destTemplate = folder.file("out.bin");
  config.resultsTemplate = folder.file("res.csv");
  std::filesystem::create_directory(config.resultsTemplate.c_str());
  const std::string report = reportOf();
  EXPECT_TRUE(report.ends_with(row("Destination fileserver IP: ") + row(" "))) << report;
  EXPECT_EQ(told, "");
}

// Another client holds the table's lock.
class LockedTable : public TestRun {
 protected:
  LockedTable() {
    config.destTemplate = folder.file("out.bin");
    config.resultsTemplate = folder.file("res.csv");
    test::writeFile(lock, "");
    test::setModified(lock, fakeClock().seconds());
  }

  FixedString lock = folder.file("res.csv_lock.txt");
};

TEST_F(LockedTable, LosesTheRowAfterTenSeconds) {
  const std::string report = reportOf();
  EXPECT_TRUE(report.ends_with(
      row("ERROR: Unable to write excel file as it is still locked." + path("res.csv")) + row(" ")))
      << report;
  EXPECT_EQ(fakeClock().sleeps, std::vector<std::uint32_t>(40, 250000));
  EXPECT_FALSE(test::exists(config.resultsTemplate));
  EXPECT_TRUE(test::exists(lock)) << "it is not ours";
  EXPECT_TRUE(result);
  EXPECT_EQ(told,
            "marrowbench: row lost: " + path("res.csv") + ": still locked by another client\n");
}

TEST_F(LockedTable, TriesAgainForTheNextRow) {
  config.iterations = 2;
  fakeClock().duringSleep = [this] {
    if (fakeClock().sleeps.size() == 45) std::filesystem::remove(lock.c_str());
  };
  (void)run();
  EXPECT_EQ(fakeClock().sleeps.size(), 45U);
  EXPECT_EQ(countOf(table(), "Date,"), 1U);
  EXPECT_EQ(countOf(table(), ",Posix,"), 1U);
}

TEST_F(LockedTable, LooksForTheTableOnceItHoldsTheLock) {
  fakeClock().duringSleep = [this] {
    test::writeFile(config.resultsTemplate, "the other client's\n");
    std::filesystem::remove(lock.c_str());
  };
  (void)run();
  EXPECT_TRUE(table().starts_with("the other client's\nNov 14.")) << table();
}

TEST_F(LockedTable, ReadsTheDateBeforeItWaits) {
  fakeClock().duringSleep = [this] {
    if (fakeClock().sleeps.size() == 8) std::filesystem::remove(lock.c_str());
  };
  (void)run();
  EXPECT_NE(table().find("\nNov 14. 22:13.20,"), std::string::npos) << table();
}

}  // namespace
}  // namespace marrowbench
