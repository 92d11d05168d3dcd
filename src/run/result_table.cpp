#include "run/result_table.h"

#include <clocale>
#include <iterator>
#include <string>

#include "run/summary_line.h"
#include "support/clock.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

struct Run {
  const TestConfig& config;
  const ParameterBlock& p;
  const FixedString& error;
  std::int64_t nullPosition;
  RunStats& stats;
};

struct Column {
  const char* header;
  FixedString (*cell)(const Run& run);
};

FixedString number(std::int64_t value) { return std::to_string(value).c_str(); }

FixedString pathOrMemory(const FixedString& path) { return path.isEmpty() ? "MEMORY" : path; }

FixedString methodName(const Run& run) {
  switch (run.config.method) {
    case Method::posix: return "Posix";
    case Method::system: return "System";
    case Method::stream: return "Stream";
    case Method::ansiC: return "AnsiC";
    case Method::winApi: return "WinApi";
  }
  return {};
}

FixedString typeName(const Run& run) {
  switch (testTypeOf(run.config.source, run.config.dest)) {
    case TestType::copy: return "Copy";
    case TestType::read: return "Read";
    case TestType::write: return "Write";
  }
  return {};
}

FixedString nullPosition(const Run& run) {
  return run.nullPosition == -1 ? FixedString() : number(run.nullPosition);
}

// A cell of interface `Index` is empty unless the client has that many interfaces.
template <std::int32_t Index, class Cell>
FixedString ofInterface(const Run& run, Cell cell) {
  if (run.config.interfaceCount <= Index) return {};
  return cell(run.config.interfaces.at(Index));
}

template <std::int32_t Index>
FixedString interfaceName(const Run& run) {
  return ofInterface<Index>(run, [](const NetworkInterface& nic) { return nic.name.view(); });
}

template <std::int32_t Index>
FixedString interfaceAddress(const Run& run) {
  return ofInterface<Index>(
      run, [](const NetworkInterface& nic) { return formatNetworkAddress(nic.address); });
}

// Bits per second to MiB per second: 8 * 1,048,576 is 2 to the power of 23.
template <std::int32_t Index>
FixedString interfaceSpeed(const Run& run) {
  return ofInterface<Index>(
      run, [](const NetworkInterface& nic) { return number(nic.bitsPerSecond >> 23); });
}

template <std::int32_t Index>
FixedString interfaceMtu(const Run& run) {
  return ofInterface<Index>(run, [](const NetworkInterface& nic) { return number(nic.mtu); });
}

constexpr Column kColumns[] = {
    {"Date", [](const Run&) { return FixedString(dateText(currentSeconds()).view()); }},
    {"Method", methodName},
    {"Type", typeName},
    {"Flush", [](const Run& r) { return FixedString(r.p.flush ? "flush" : ""); }},
    {"PreAllocate", [](const Run& r) { return FixedString(r.p.prealloc ? "prealloc" : ""); }},
    {"Chunk Wait", [](const Run& r) { return number(r.p.chunkWait); }},
    {"Chunk Size", [](const Run& r) { return number(r.p.chunkSize); }},
    {"Chunk Size KiB", [](const Run& r) { return number(r.p.chunkSize / 1024); }},
    {"System Buffer", [](const Run& r) { return number(r.p.systemBuffer); }},
    {"Filesize KiB", [](const Run& r) { return number(r.p.fileSize / 1024); }},
    {"Iterations", [](const Run& r) { return number(r.config.iterations); }},
    {"Empty SystemCache Mode", [](const Run& r) { return number(r.p.emptyCacheMode); }},
    {"Source", [](const Run& r) { return pathOrMemory(r.config.source); }},
    {"Source IP", [](const Run& r) { return formatNetworkAddress(r.config.sourceAddress); }},
    {"Dest", [](const Run& r) { return pathOrMemory(r.config.dest); }},
    {"Dest IP", [](const Run& r) { return formatNetworkAddress(r.config.destAddress); }},
    {"Error", [](const Run& r) { return r.error; }},
    {"Zero test", nullPosition},
    {"Time ms", [](const Run& r) { return number(r.stats.dataMs); }},
    {"Time KiB/s", [](const Run& r) { return number(kibPerSecond(r.stats)); }},
    {"Copy Speed %", [](const Run& r) { return number(roundedCopySpeedPercent(r.stats)); }},
    {"NICa", interfaceName<0>},
    {"NICa IP", interfaceAddress<0>},
    {"NICa speed MiB/s", interfaceSpeed<0>},
    {"NICa MTU", interfaceMtu<0>},
    {"NICb", interfaceName<1>},
    {"NICb IP", interfaceAddress<1>},
    {"NICb speed MiB/s", interfaceSpeed<1>},
    {"NICb MTU", interfaceMtu<1>},
    {"NICc", interfaceName<2>},
    {"NICc IP", interfaceAddress<2>},
    {"NICc speed MiB/s", interfaceSpeed<2>},
    {"NICc MTU", interfaceMtu<2>},
};

static_assert(std::size(kColumns) == 33);

}  // namespace

char tableSeparator() {
  const TinyText decimalPoint = std::localeconv()->decimal_point;
  return decimalPoint.view() == "," ? ';' : ',';
}

ResultLines buildResultLines(const TestConfig& config, _fileGLobal& result, char separator) {
  ParameterBlock& outcome = result.parameters;
  const Run run{config, config.parameters.parameters, result.errorText, outcome.nullPosition,
                outcome.stats};
  ResultLines lines;
  for (const Column& column : kColumns) {
    lines.header.append(column.header).append(separator);
    lines.row.append(column.cell(run)).append(separator);
  }
  lines.header.append('\n');
  lines.row.append('\n');
  return lines;
}

}  // namespace marrowbench
