// The bytes of a settings file, through loading into records.

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/sound.h"
#include "main/settings_loader.h"

namespace marrowbench {
namespace {

// A few records only, so that a table without room for a line comes up, too.
constexpr std::size_t kRecords = 4;

// A file in memory: no input that ends the fuzzer leaves anything behind.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size)
      : descriptor(memfd_create("run12.bst", 0)) {
    test::expect(write(descriptor, data, size) == static_cast<ssize_t>(size));
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { (void)close(descriptor); }

  [[nodiscard]] FixedString path() const {
    return ("/proc/self/fd/" + std::to_string(descriptor)).c_str();
  }

 private:
  int descriptor;
};

void expectSound(const TestConfig& config) {
  for (const FixedString* path : {&config.sourceTemplate, &config.destTemplate, &config.logTemplate,
                                  &config.resultsTemplate, &config.settingsPath}) {
    test::expectSound(*path);
  }
  test::expectSound(config.settingsLine);
  test::expect(config.settingsLine.isNotEmpty());
  test::expect(config.method == Method::posix || config.method == Method::system ||
               config.method == Method::stream || config.method == Method::ansiC);
}

}  // namespace
}  // namespace marrowbench

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace marrowbench;
  const MemoryFile file(data, size);
  std::array<TestConfig, kRecords> table;
  const LoadedSettings loaded = loadSettings(file.path(), table);
  test::expect(loaded.count >= 0 && loaded.count <= static_cast<std::int32_t>(kRecords));
  test::expectSound(loaded.nextPath);
  for (std::int32_t i = 0; i < loaded.count; ++i) {
    expectSound(table.at(static_cast<std::size_t>(i)));
  }
  return 0;
}
