#include "main/program.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

#include "main/command_line.h"
#include "main/done_marker.h"
#include "main/settings_loader.h"
#include "main/start_minute.h"
#include "run/test_runner.h"
#include "support/clock.h"
#include "support/console.h"
#include "support/signal_hold.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

constexpr const char* kRule = "----------------------------------------------------------------";

void printBanner() {
  std::puts(kRule);
  std::printf("Marrowbench ");
  std::printf(" 9.1.01");
  std::printf("\nCopyright (c) 2026 the Marrowbench authors. MIT License.\n");
  std::puts(kRule);
  flushConsole();
}

void printStamp() {
  std::puts(shortStamp(currentSeconds()).c_str());
  flushConsole();
}

// Records and memory live as long as the process: chained files and later tests use them again.
class SettingsCycle {
 public:
  SettingsCycle() : table(std::make_unique<TestConfig[]>(kMaxTestLines)) {}
  SettingsCycle(const SettingsCycle&) = delete;
  SettingsCycle& operator=(const SettingsCycle&) = delete;
  ~SettingsCycle() { std::free(sharedMemoryBuffer); }

  // Works through one settings file and returns the path of the next, empty for none.
  FixedString runFile(const FixedString& path) {
    std::printf("\n\n######## Loading/Waiting for settings file '%s'  ########\n\n", path.c_str());
    flushConsole();
    const bool existedAtFirstCheck = waitForSettingsFile(path);
    const std::int64_t foundAt = currentSeconds();
    const LoadedSettings loaded = loadSettings(path, {table.get(), kMaxTestLines});

    startTogether(existedAtFirstCheck, startMinuteFor(foundAt));
    const bool markDone = runTests(loaded.count);
    if (loaded.count == 0 || markDone) writeDoneMarker(path);
    return loaded.nextPath;
  }

  void printLostRows() const { lostRows.printSum(); }

 private:
  static void startTogether(bool existedAtFirstCheck, std::int64_t startMinute) {
    const std::int64_t now = currentSeconds();
    printStamp();
    if (existedAtFirstCheck) {
      std::puts("Config loaded. ");
      flushConsole();
      return;
    }
    std::printf(
        "Config loaded. Waiting for the next minute to start... %dsec \n\n"
        "Note: A time sync for all your clients helps to start this test at the same time.\n\n",
        shownWaitSeconds(startMinute, now));
    flushConsole();
    waitForMinute(startMinute);
  }

  // Returns whether one of the tests asks for the done marker.
  bool runTests(std::int32_t count) {
    bool markDone = false;
    for (std::int32_t configIndex = 0; configIndex < count; ++configIndex) {
      TestConfig& config = table[static_cast<std::size_t>(configIndex)];
      TestRunner::run(config, sharedMemoryBuffer, configIndex, lostRows);
      markDone = markDone || config.markDone;
    }
    return markDone;
  }

  std::unique_ptr<TestConfig[]> table;
  std::byte* sharedMemoryBuffer = nullptr;
  LostRows lostRows;
};

}  // namespace

int runProgram(std::span<char* const> arguments) {
  letWritesFail();
  tzset();
  printBanner();
  const CommandLine commandLine = readCommandLine(arguments);
  if (commandLine.exitStatus != 0) {
    std::puts(commandLine.message);
    flushConsole();
    return commandLine.exitStatus;
  }
  SettingsCycle cycle;
  FixedString path = commandLine.settingsPath;
  while (path.isNotEmpty()) path = cycle.runFile(path);
  cycle.printLostRows();

  printStamp();
  std::puts("");
  flushConsole();
  return 0;
}

}  // namespace marrowbench
