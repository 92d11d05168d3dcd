// Any record with any statistics, through the summary line and the table's row.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/sound.h"
#include "run/result_table.h"
#include "run/summary_line.h"

namespace marrowbench {
namespace {

class AnyRecord {
 public:
  AnyRecord(const std::uint8_t* data, std::size_t size) : input(data, size) {}

  RunStats stats() {
    RunStats stats;
    read(stats.bytes);
    read(stats.waitMs);
    read(stats.files);
    read(stats.dataMs);
    read(stats.chunks);
    read(stats.stepBytes);
    return stats;
  }

  TestConfig config() {
    TestConfig config;
    config.method = input.PickValueInArray(
        {Method::posix, Method::system, Method::stream, Method::ansiC, Method::winApi});
    read(config.iterations);
    ParameterBlock& p = config.parameters.parameters;
    read(p.systemBuffer);
    read(p.chunkWait);
    read(p.chunkSize);
    p.prealloc = input.ConsumeBool();
    p.flush = input.ConsumeBool();
    read(p.emptyCacheMode);
    read(p.fileSize);
    config.interfaceCount = input.ConsumeIntegralInRange(0, 3);
    for (NetworkInterface& nic : config.interfaces) {
      nic.name = std::string_view(input.ConsumeRandomLengthString(60));
      read(nic.address);
      read(nic.bitsPerSecond);
      read(nic.mtu);
    }
    read(config.sourceAddress);
    read(config.destAddress);
    config.source = text();
    config.dest = text();
    return config;
  }

  _fileGLobal result() {
    _fileGLobal result;
    read(result.parameters.nullPosition);
    result.parameters.stats = stats();
    result.errorText = text();
    return result;
  }

 private:
  template <class Integer>
  void read(Integer& value) {
    value = input.ConsumeIntegral<Integer>();
  }
  void read(NetworkAddress& address) {
    for (std::uint8_t& byte : address.bytes) read(byte);
  }
  FixedString text() { return std::string_view(input.ConsumeRandomLengthString(600)); }

  FuzzedDataProvider input;
};

}  // namespace
}  // namespace marrowbench

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace marrowbench;
  AnyRecord any(data, size);
  const TestConfig config = any.config();
  _fileGLobal result = any.result();
  const ResultLines lines = buildResultLines(config, result, ',');
  test::expectSound(lines.header);
  test::expectSound(lines.row);
  test::expect(lines.header.view().ends_with(",\n"));
  test::expect(lines.row.view().ends_with(",\n"));  // three texts and thirty figures always fit

  RunStats stats = any.stats();
  test::expectSound(summaryLine(stats, false));
  const FixedString padded = summaryLine(stats, true);
  test::expectSound(padded);
  test::expect(padded.view().ends_with("% )"));
  return 0;
}
