#ifndef MARROWBENCH_RUN_TEST_RUNNER_H
#define MARROWBENCH_RUN_TEST_RUNNER_H

#include <cstddef>
#include <cstdint>

#include "run/lost_rows.h"
#include "settings/test_config.h"

namespace marrowbench {

/// Runs one test configuration over all its iterations: expands the paths, transfers, reports on
/// console and log, appends one row per iteration to the results table. Deletes no file.
class TestRunner {
 public:
  /// @param config              its expanded paths are rewritten
  /// @param sharedMemoryBuffer  1 GiB from mallocPages(); null until the first test that needs it,
  ///                            which allocates it. Never freed here.
  /// @param configIndex         number of the configuration in the settings file, 0 for the first
  /// @param lostRows            told what became of each row of the results table
  /// @return false when the destination folder is missing and can't be made: the configuration
  ///         ends then at once. True otherwise, whatever the tests' outcome.
  static bool run(TestConfig& config, std::byte*& sharedMemoryBuffer,
                  const std::int32_t& configIndex, LostRows& lostRows);

 private:
  TestRunner(TestConfig& testConfig, std::byte*& memory, std::int32_t index, LostRows& rows)
      : config(testConfig), sharedMemoryBuffer(memory), configIndex(index), lostRows(rows) {}

  bool runAll();
  bool runIteration(std::int32_t iteration);

  void expandPaths(std::int32_t iteration);
  [[nodiscard]] FixedString expanded(FixedString path, std::int32_t iteration) const;
  void provideMemory();
  void transfer(std::int32_t iteration);
  void transferMemory(std::int32_t iteration);
  [[nodiscard]] std::size_t bytesInMemory(const FixedString& path, bool isRead) const;

  void printRow(const FixedString& label, const FixedString& text1 = {},
                const FixedString& text2 = {}, const FixedString& text3 = {},
                const FixedString& text4 = {}) const;
  void printOpening() const;
  void printReport();
  void printNullData() const;
  void printTotal(std::int32_t totalMs) const;
  void appendResult();

  TestConfig& config;
  std::byte*& sharedMemoryBuffer;
  const std::int32_t configIndex;
  LostRows& lostRows;
  TestType type{};          // of the expanded paths
  int memoryError = 0;      // errno of the allocation, while there is no buffer
  std::int64_t dataMs = 0;  // data time of all iterations
  _fileGLobal result;       // the latest run; only its statistics are reset between iterations
};

}  // namespace marrowbench

#endif
