#include "run/result_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string decimalPoint = ".";
std::string nothing;

}  // namespace

// Linked in place of the C library's, so that no locale with another decimal point is needed.
extern "C" lconv* localeconv() {
  static lconv conventions{};
  conventions.decimal_point = decimalPoint.data();
  conventions.thousands_sep = nothing.data();
  conventions.grouping = nothing.data();
  return &conventions;
}

namespace marrowbench {
namespace {

constexpr const char* kHeader =
    "Date,Method,Type,Flush,PreAllocate,Chunk Wait,Chunk Size,Chunk Size KiB,System Buffer,"
    "Filesize KiB,Iterations,Empty SystemCache Mode,Source,Source IP,Dest,Dest IP,Error,Zero test,"
    "Time ms,Time KiB/s,Copy Speed %,NICa,NICa IP,NICa speed MiB/s,NICa MTU,NICb,NICb IP,"
    "NICb speed MiB/s,NICb MTU,NICc,NICc IP,NICc speed MiB/s,NICc MTU,\n";

std::vector<std::string> split(std::string_view line) {
  std::vector<std::string> cells;
  std::istringstream stream{std::string(line)};
  for (std::string cell; std::getline(stream, cell, ',');) cells.push_back(cell);
  return cells;
}

// A write test of 1 MiB that took 2 ms.
class ResultTable : public testing::Test {
 protected:
  ResultTable() {
    config.iterations = 1;
    config.dest = "/data/bench/out.bin";
    ParameterBlock& p = config.parameters.parameters;
    p.systemBuffer = 0;
    p.chunkSize = 1048576;
    p.fileSize = 1048576;
    result.parameters.stats.files = 1;
    result.parameters.stats.bytes = 1048576;
    result.parameters.stats.dataMs = 2;
  }

  std::string row() { return std::string(buildResultLines(config, result, ',').row.view()); }

  // The cell below a header.
  std::string cell(const std::string& header) {
    const ResultLines lines = buildResultLines(config, result, ',');
    const auto headers = split(lines.header);
    const auto column = std::find(headers.begin(), headers.end(), header);
    return split(lines.row).at(static_cast<std::size_t>(column - headers.begin()));
  }

  TestConfig config;
  _fileGLobal result;
};

TEST_F(ResultTable, HasOneHeaderForAllClients) {
  EXPECT_EQ(buildResultLines(config, result, ',').header.view(), kHeader);
}

TEST_F(ResultTable, HasOneRowForEachIteration) {
  EXPECT_EQ(row(),
            "Nov 14. 22:13.20,Posix,Write,,,0,1048576,1024,0,1024,1,0,MEMORY,,/data/bench/out.bin,"
            ",,,2,512000,100,,,,,,,,,,,,,\n");
}

TEST_F(ResultTable, SeparatesHeaderAndRowAlike) {
  std::string header = kHeader;
  std::string commaRow = row();
  std::replace(header.begin(), header.end(), ',', ';');
  std::replace(commaRow.begin(), commaRow.end(), ',', ';');
  const ResultLines lines = buildResultLines(config, result, ';');
  EXPECT_EQ(lines.header.view(), header);
  EXPECT_EQ(lines.row.view(), commaRow);
}

TEST_F(ResultTable, NamesTheMethod) {
  const struct {
    std::int32_t method;
    const char* name;
  } cases[] = {{0, "Posix"},  {1, "System"}, {2, "Stream"}, {3, "AnsiC"},
               {4, "WinApi"}, {5, ""},       {-1, ""}};
  for (const auto& c : cases) {
    config.method = static_cast<Method>(c.method);
    EXPECT_EQ(cell("Method"), c.name) << c.method;
  }
}

TEST_F(ResultTable, NamesTheTypeAndThePaths) {
  const struct {
    const char* source;
    const char* dest;
    const char* type;
    const char* sourceCell;
    const char* destCell;
  } cases[] = {
      {"a/b", "c/d", "Copy", "a/b", "c/d"},       {"a/b", "", "Read", "a/b", "MEMORY"},
      {"a/b", "MeMory", "Read", "a/b", "MeMory"}, {"", "", "Read", "MEMORY", "MEMORY"},
      {"", "c/d", "Write", "MEMORY", "c/d"},      {"memory", "c/d", "Write", "memory", "c/d"}};
  for (const auto& c : cases) {
    config.source = c.source;
    config.dest = c.dest;
    EXPECT_EQ(cell("Type"), c.type) << c.source << " to " << c.dest;
    EXPECT_EQ(cell("Source"), c.sourceCell);
    EXPECT_EQ(cell("Dest"), c.destCell);
  }
}

TEST_F(ResultTable, ShowsTheParameters) {
  ParameterBlock& p = config.parameters.parameters;
  p.flush = true;
  p.prealloc = true;
  p.chunkWait = -7;
  p.chunkSize = -1025;
  p.systemBuffer = 5;
  p.fileSize = 1073741824;
  p.emptyCacheMode = 4;
  config.iterations = 12;
  const struct {
    const char* header;
    const char* text;
  } cases[] = {
      {"Flush", "flush"},          {"PreAllocate", "prealloc"}, {"Chunk Wait", "-7"},
      {"Chunk Size", "-1025"},     {"Chunk Size KiB", "-1"},    {"System Buffer", "5"},
      {"Filesize KiB", "1048576"}, {"Iterations", "12"},        {"Empty SystemCache Mode", "4"}};
  for (const auto& c : cases) EXPECT_EQ(cell(c.header), c.text) << c.header;
}

TEST_F(ResultTable, ShowsTheOutcome) {
  result.setError("went, wrong");
  result.parameters.nullPosition = 5368709120;
  result.parameters.stats.dataMs = 5000000000;
  const std::string text = row();
  EXPECT_NE(text.find(",,ERROR: went, wrong,5368709120,5000000000,0,100,"), std::string::npos)
      << text << " (no quotes)";
}

TEST_F(ResultTable, LeavesZeroTestEmptyWhenNotMade) {
  const struct {
    std::int64_t position;
    const char* text;
  } cases[] = {{-1, ""}, {0, "0"}, {3796, "3796"}};
  for (const auto& c : cases) {
    result.parameters.nullPosition = c.position;
    EXPECT_EQ(cell("Zero test"), c.text) << c.position;
  }
}

TEST_F(ResultTable, KeepsItsSpeedForATimeOfZero) {
  result.parameters.stats.dataMs = 0;
  EXPECT_EQ(cell("Time KiB/s"), "-9223372036854775808");
  EXPECT_EQ(cell("Copy Speed %"), "100");
}

TEST_F(ResultTable, RoundsTheCopySpeedAwayFromZero) {
  RunStats& stats = result.parameters.stats;
  stats.waitMs = 9;
  stats.chunks = 1;
  stats.dataMs = 8;
  EXPECT_EQ(cell("Copy Speed %"), "-13");
}

TEST_F(ResultTable, ShowsKnownAddresses) {
  config.sourceAddress.bytes = {10, 0, 0, 5};
  config.destAddress.bytes = {192, 168, 1, 20};
  EXPECT_EQ(cell("Source IP"), "010.000.000.005");
  EXPECT_EQ(cell("Dest IP"), "192.168.001.020");
}

TEST_F(ResultTable, ShowsAsManyInterfacesAsThereAre) {
  for (std::size_t i = 0; i < 3; ++i) {
    NetworkInterface& nic = config.interfaces.at(i);
    nic.name = i == 0 ? "en0" : i == 1 ? "en1" : "en2";
    nic.address.bytes = {10, 0, 0, static_cast<std::uint8_t>(i + 1)};
    nic.bitsPerSecond = 10000000000 + static_cast<std::int64_t>(i) * 8388608;
    nic.mtu = 1500 + static_cast<std::int32_t>(i);
  }
  const std::string cells[] = {"en0,010.000.000.001,1192,1500,", "en1,010.000.000.002,1193,1501,",
                               "en2,010.000.000.003,1194,1502,"};
  const std::string empty = ",,,,";
  for (std::int32_t count = 0; count <= 3; ++count) {
    config.interfaceCount = count;
    std::string end = ",100,";
    for (std::int32_t i = 0; i < 3; ++i) end += i < count ? cells[i] : empty;
    const std::string text = row();
    EXPECT_TRUE(text.ends_with(end + "\n")) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), ','), 33) << count;
  }
}

TEST_F(ResultTable, HoldsTheLongestRow) {
  static_assert(decltype(ResultLines::row)::capacity() == 5000);
  static_assert(decltype(ResultLines::header)::capacity() == 5000);
  const std::string longest(500, 'x');
  config.source = config.dest = result.errorText = longest.c_str();
  EXPECT_TRUE(row().ends_with(",\n"));
  EXPECT_GT(row().size(), 1500U);
}

TEST(TableSeparator, DependsOnTheDecimalPoint) {
  const struct {
    const char* point;
    char separator;
  } cases[] = {{",", ';'}, {".", ','}, {",,", ','}, {"", ','}};
  for (const auto& c : cases) {
    decimalPoint = c.point;
    EXPECT_EQ(tableSeparator(), c.separator) << c.point;
  }
  decimalPoint = ".";
}

}  // namespace
}  // namespace marrowbench
