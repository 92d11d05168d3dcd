#include "run/result_table.h"

#include <array>
#include <clocale>
#include <string>

#include "run/summary_line.h"
#include "support/clock.h"
#include "support/time_stamps.h"

namespace marrowbench {
namespace {

struct Run {
  const TestConfig& config;
  const ParameterBlock& parameters;
  _fileGLobal& result;
};

struct Column {
  const char* header;
  void (*appendCell)(TextBuffer& row, const Run& run);
};

void appendNumber(TextBuffer& row, std::int64_t value) { row.append(std::to_string(value)); }

void appendPath(TextBuffer& row, const FixedString& path) {
  row.append(path.isEmpty() ? "MEMORY" : path.view());
}

const char* methodName(Method method) {
  switch (method) {
    case Method::posix:
      return "Posix";
    case Method::system:
      return "System";
    case Method::stream:
      return "Stream";
    case Method::ansiC:
      return "AnsiC";
    case Method::winApi:
      return "WinApi";
  }
  return "";
}

const char* typeName(TestType type) {
  switch (type) {
    case TestType::copy:
      return "Copy";
    case TestType::read:
      return "Read";
    case TestType::write:
      return "Write";
  }
  return "";
}

// A cell of interface `Index` is empty unless the client has that many interfaces.
template <std::int32_t Index>
const NetworkInterface* interfaceOf(const Run& run) {
  return run.config.interfaceCount > Index ? &run.config.interfaces.at(Index) : nullptr;
}

template <std::int32_t Index>
void appendInterfaceName(TextBuffer& row, const Run& run) {
  if (const auto* nic = interfaceOf<Index>(run)) row.append(nic->name);
}

template <std::int32_t Index>
void appendInterfaceAddress(TextBuffer& row, const Run& run) {
  if (const auto* nic = interfaceOf<Index>(run)) row.append(formatNetworkAddress(nic->address));
}

// Bits per second to MiB per second: 8 * 1,048,576 is 2 to the power of 23.
template <std::int32_t Index>
void appendInterfaceSpeed(TextBuffer& row, const Run& run) {
  if (const auto* nic = interfaceOf<Index>(run)) appendNumber(row, nic->bitsPerSecond >> 23);
}

template <std::int32_t Index>
void appendInterfaceMtu(TextBuffer& row, const Run& run) {
  if (const auto* nic = interfaceOf<Index>(run)) appendNumber(row, nic->mtu);
}

constexpr std::array kColumns = {
    Column{"Date", [](TextBuffer& row, const Run&) { row.append(dateText(currentSeconds())); }},
    Column{"Method",
           [](TextBuffer& row, const Run& r) { row.append(methodName(r.config.method)); }},
    Column{"Type",
           [](TextBuffer& row, const Run& r) {
             row.append(typeName(testTypeOf(r.config.source, r.config.dest)));
           }},
    Column{"Flush",
           [](TextBuffer& row, const Run& r) { row.append(r.parameters.flush ? "flush" : ""); }},
    Column{
        "PreAllocate",
        [](TextBuffer& row, const Run& r) { row.append(r.parameters.prealloc ? "prealloc" : ""); }},
    Column{"Chunk Wait",
           [](TextBuffer& row, const Run& r) { appendNumber(row, r.parameters.chunkWait); }},
    Column{"Chunk Size",
           [](TextBuffer& row, const Run& r) { appendNumber(row, r.parameters.chunkSize); }},
    Column{"Chunk Size KiB",
           [](TextBuffer& row, const Run& r) { appendNumber(row, r.parameters.chunkSize / 1024); }},
    Column{"System Buffer",
           [](TextBuffer& row, const Run& r) { appendNumber(row, r.parameters.systemBuffer); }},
    Column{"Filesize KiB",
           [](TextBuffer& row, const Run& r) { appendNumber(row, r.parameters.fileSize / 1024); }},
    Column{"Iterations",
           [](TextBuffer& row, const Run& r) { appendNumber(row, r.config.iterations); }},
    Column{"Empty SystemCache Mode",
           [](TextBuffer& row, const Run& r) { appendNumber(row, r.parameters.emptyCacheMode); }},
    Column{"Source", [](TextBuffer& row, const Run& r) { appendPath(row, r.config.source); }},
    Column{"Source IP",
           [](TextBuffer& row, const Run& r) {
             row.append(formatNetworkAddress(r.config.sourceAddress));
           }},
    Column{"Dest", [](TextBuffer& row, const Run& r) { appendPath(row, r.config.dest); }},
    Column{"Dest IP", [](TextBuffer& row,
                         const Run& r) { row.append(formatNetworkAddress(r.config.destAddress)); }},
    Column{"Error", [](TextBuffer& row, const Run& r) { row.append(r.result.errorText); }},
    Column{"Zero test",
           [](TextBuffer& row, const Run& r) {
             const std::int64_t position = r.result.parameters.nullPosition;
             if (position != -1) appendNumber(row, position);
           }},
    Column{"Time ms", [](TextBuffer& row,
                         const Run& r) { appendNumber(row, r.result.parameters.stats.dataMs); }},
    Column{"Time KiB/s",
           [](TextBuffer& row, const Run& r) {
             appendNumber(row, kibPerSecond(r.result.parameters.stats));
           }},
    Column{"Copy Speed %",
           [](TextBuffer& row,
              const Run&
                  r) { appendNumber(row, roundedCopySpeedPercent(r.result.parameters.stats)); }},
    Column{"NICa", appendInterfaceName<0>},
    Column{"NICa IP", appendInterfaceAddress<0>},
    Column{"NICa speed MiB/s", appendInterfaceSpeed<0>},
    Column{"NICa MTU", appendInterfaceMtu<0>},
    Column{"NICb", appendInterfaceName<1>},
    Column{"NICb IP", appendInterfaceAddress<1>},
    Column{"NICb speed MiB/s", appendInterfaceSpeed<1>},
    Column{"NICb MTU", appendInterfaceMtu<1>},
    Column{"NICc", appendInterfaceName<2>},
    Column{"NICc IP", appendInterfaceAddress<2>},
    Column{"NICc speed MiB/s", appendInterfaceSpeed<2>},
    Column{"NICc MTU", appendInterfaceMtu<2>},
};

static_assert(kColumns.size() == 33);

}  // namespace

char tableSeparator() {
  const TinyText decimalPoint = std::localeconv()->decimal_point;
  return decimalPoint.view() == "," ? ';' : ',';
}

ResultLines buildResultLines(const TestConfig& config, _fileGLobal& result, char separator) {
  const Run run{config, config.parameters.parameters, result};
  ResultLines lines;
  for (const Column& column : kColumns) {
    lines.header.append(column.header).append(separator);
    column.appendCell(lines.row, run);
    lines.row.append(separator);
  }
  lines.header.append('\n');
  lines.row.append('\n');
  return lines;
}

}  // namespace marrowbench
