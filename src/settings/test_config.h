#ifndef MARROWBENCH_SETTINGS_TEST_CONFIG_H
#define MARROWBENCH_SETTINGS_TEST_CONFIG_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "fileaccess/file_method.h"
#include "paths/network_address.h"
#include "support/fixed_string.h"

namespace marrowbench {

/// Room for test lines in one settings file.
inline constexpr std::int32_t kMaxTestLines = 200;

/// How a test does its file work.
enum class Method : std::int32_t {
  posix = 0,   ///< file descriptors
  system = 1,  ///< runs nothing here
  stream = 2,  ///< the standard library's file streams
  ansiC = 3,   ///< C stdio
  winApi = 4,  ///< runs nothing; no settings line gives it
};

enum class TestType : std::int32_t { copy = 0, read = 1, write = 2 };

/// One network interface of this client. All empty: adapters are not asked for.
struct NetworkInterface {
  InterfaceName name;
  NetworkAddress address;
  std::int64_t bitsPerSecond = 0;
  std::int32_t mtu = 0;
};

/// One test line of a settings file. The table of these is made once per process and its records
/// are reused for every settings file: a field that a new line does not write keeps its value.
struct TestConfig {
  Method method = Method::posix;
  _fileGLobal parameters;       ///< the parameter block that every method object gets as a whole
  std::int32_t iterations = 0;  ///< runs; 0 or less: none
  FixedString sourceTemplate;   ///< empty: memory. On a chain line: the next settings file's path
  FixedString destTemplate;     ///< empty: memory
  FixedString logTemplate;      ///< path of the text log
  FixedString resultsTemplate;  ///< path of the shared results table
  bool markDone = false;        ///< leave a done marker when the settings file is finished
  FixedString settingsPath;     ///< the settings file that the line came from
  std::int32_t settingsFileNumber = 0;  ///< the number at the end of that file's name
  bool chainToNext = false;             ///< the line names the next settings file
  FixedString logPath;                  ///< the four templates with their placeholders expanded
  FixedString resultsPath;
  FixedString source;
  FixedString dest;
  std::array<NetworkInterface, 3> interfaces;
  NetworkAddress sourceAddress;
  NetworkAddress destAddress;
  std::int32_t interfaceCount = 0;
  LineString settingsLine;  ///< the line as it was parsed, trimmed
};

static_assert(sizeof(TestConfig) == 7464);

/// The kind of test that a source and a destination ask for, empty or "MEMORY" (any case) standing
/// for memory. A line with both in memory is a read test.
[[nodiscard]] TestType testTypeOf(const FixedString& source, const FixedString& dest);

}  // namespace marrowbench

#endif
