#include "run/test_runner.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <string>
#include <string_view>

#include "fileaccess/malloc_block.h"
#include "paths/folders.h"
#include "paths/log_line.h"
#include "paths/path_text.h"
#include "paths/placeholders.h"
#include "results/shared_table.h"
#include "run/method_run.h"
#include "run/result_table.h"
#include "run/summary_line.h"
#include "run/test_data.h"
#include "support/clock.h"
#include "support/file_status.h"
#include "support/present_memory.h"

namespace marrowbench {
namespace {

constexpr std::string_view kFolderMissing = "ERROR: Folder does not exists: ";

}  // namespace

bool TestRunner::run(TestConfig& config, std::byte*& sharedMemoryBuffer,
                     const std::int32_t& configIndex, LostRows& lostRows) {
  return TestRunner(config, sharedMemoryBuffer, configIndex, lostRows).runAll();
}

bool TestRunner::runAll() {
  expandPaths(0);
  printOpening();
  provideMemory();

  std::int64_t start = 0;
  nowMs(start);
  for (std::int32_t i = 0; i < config.iterations; ++i) {
    if (!runIteration(i)) return false;
  }
  printTotal(elapsedMs(start));
  return true;
}

bool TestRunner::runIteration(std::int32_t iteration) {
  // Before the expansion: this row goes to the log of the iteration before.
  printEmptyCacheInfo(config);
  expandPaths(iteration);
  result.parameters.stats = RunStats{};

  if (config.dest.isNotEmpty() && !provideFolderOf(config.dest)) {
    printRow(kFolderMissing, parentFolder(config.dest));
    return false;
  }
  transfer(iteration);
  dataMs += result.parameters.stats.dataMs;

  printReport();
  printNullData();
  printDestinationInfo(config);
  appendResult();
  printRow(" ");
  return true;
}

void TestRunner::expandPaths(std::int32_t iteration) {
  config.source = expanded(config.sourceTemplate, iteration);
  config.dest = expanded(config.destTemplate, iteration);
  config.logPath = expanded(config.logTemplate, iteration);
  config.resultsPath = expanded(config.resultsTemplate, iteration);
  type = testTypeOf(config.source, config.dest);
}

FixedString TestRunner::expanded(FixedString path, std::int32_t iteration) const {
  expandPlaceholders(config, path, configIndex, iteration, false);
  return path;
}

void TestRunner::provideMemory() {
  if (type == TestType::copy) return;
  if (sharedMemoryBuffer != nullptr) return;
  sharedMemoryBuffer = static_cast<std::byte*>(mallocPages(kMaxFileSize));
  if (sharedMemoryBuffer == nullptr) memoryError = errno;
}

void TestRunner::transfer(std::int32_t iteration) {
  if (type != TestType::copy) return transferMemory(iteration);
  runCopyTest(config, expanded(config.source, iteration), expanded(config.dest, iteration), result);
}

void TestRunner::transferMemory(std::int32_t iteration) {
  if (sharedMemoryBuffer == nullptr) {
    result.allocateFailed(memoryError);
    return;
  }
  const bool isRead = type == TestType::read;
  const FixedString path = expanded(isRead ? config.source : config.dest, iteration);
  const std::span<std::byte> memory(sharedMemoryBuffer, bytesInMemory(path, isRead));
  makePresent(memory.data(), memory.size());
  if (!isRead) fillTestData(memory, testDataSeed(configIndex, iteration));
  runReadWriteTest(config, path, sharedMemoryBuffer, isRead, result);
}

std::size_t TestRunner::bytesInMemory(const FixedString& path, bool isRead) const {
  std::int64_t size = config.parameters.parameters.fileSize;
  if (isRead) (void)fileStatus(path, nullptr, &size);
  // As the test will see it, in 32 bits.
  return static_cast<std::size_t>(std::clamp(static_cast<std::int32_t>(size), 0, kMaxFileSize));
}

void TestRunner::printRow(const FixedString& label, const FixedString& text1,
                          const FixedString& text2, const FixedString& text3,
                          const FixedString& text4) const {
  writeLogLine(config.logPath, label, text1, text2, text3, text4);
}

void TestRunner::printOpening() const {
  printRow("___   ", config.settingsPath, "  __  ", std::to_string(configIndex).c_str(),
           "  ____________________________________________________");
  printRow(narrowedText<499>(config.settingsLine).view());
}

void TestRunner::printReport() {
  if (result.errorText.isNotEmpty()) return printRow(result.errorText);
  FixedString line = summaryLine(result.parameters.stats);
  if (type != TestType::copy) {
    line.replaceAll("Copy ", "Transfer ");
    line.replaceAll("copied", type == TestType::read ? "read" : "written");
  }
  printRow(line);
}

void TestRunner::printNullData() const {
  const std::int64_t position = result.parameters.nullPosition;
  if (position == 0) return printRow("Null data test: Ok");
  if (position == -1) return printRow("Null data test: N/A");
  printRow("Null data test: Null found before file position ", std::to_string(position).c_str());
}

void TestRunner::printTotal(std::int32_t totalMs) const {
  printRow("Total time: ", std::to_string(totalMs).c_str(),
           "ms ( data read/write only: ", std::to_string(dataMs).c_str(), "ms)");
  printRow("___________________________\n");
}

void TestRunner::appendResult() {
  const FixedString& path = config.resultsPath;
  if (path.isEmpty()) return;
  const ResultLines lines = buildResultLines(config, result, tableSeparator());
  if (!provideFolderOf(path)) printRow(kFolderMissing, parentFolder(path));

  const TableAppend outcome = appendToTable(path, lines.header, lines.row);
  const int code = errno;
  if (outcome == TableAppend::locked) {
    printRow("ERROR: Unable to write excel file as it is still locked.", path);
  }
  lostRows.note(path, outcome, code);
}

}  // namespace marrowbench
