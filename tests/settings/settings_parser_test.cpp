#include "settings/settings_parser.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "settings/settings_validation.h"

namespace marrowbench {
namespace {

constexpr const char* kSettingsPath = "/data/bench/run12.bst";

// Positions of the fields in a line.
enum Field {
  kMethod,
  kFlush,
  kPrealloc,
  kChunkWait,
  kChunkSize,
  kSystemBuffer,
  kFileSize,
  kIterations,
  kEmptyCacheMode,
  kSource,
  kDest,
  kLog,
  kResults,
  kDone
};

bool parse(TestConfig& config, std::string_view bytes, const char* settingsPath = kSettingsPath) {
  LineString line;
  line.assignBytes(bytes);
  const bool accepted = parseSettingsLine(config, line, settingsPath).accepted;
  if (accepted && !config.chainToNext) validate(config);
  return accepted;
}

TestConfig parsed(std::string_view bytes, const char* settingsPath = kSettingsPath) {
  TestConfig config;
  EXPECT_TRUE(parse(config, bytes, settingsPath)) << bytes;
  return config;
}

bool accepts(std::string_view bytes) {
  TestConfig config;
  return parse(config, bytes);
}

// A copy test through descriptors with one field replaced.
std::string lineWith(Field field, std::string_view text) {
  std::array<std::string_view, 14> fields = {"Posix",   "0",       "0",       "0",    "64",
                                             "0",       "64",      "1",       "0",    "in.bin",
                                             "out.bin", "log.txt", "res.csv", "false"};
  fields.at(field) = text;
  std::string line;
  for (const std::string_view f : fields) line.append(f).append(";");
  return line;
}

const ParameterBlock& block(const TestConfig& config) { return config.parameters.parameters; }

const FixedString& pathTemplate(const TestConfig& config, Field field) {
  if (field == kSource) return config.sourceTemplate;
  if (field == kDest) return config.destTemplate;
  return field == kLog ? config.logTemplate : config.resultsTemplate;
}

constexpr Field kPaths[] = {kSource, kDest, kLog, kResults};
constexpr Field kNumbers[] = {kChunkWait, kChunkSize,  kSystemBuffer,
                              kFileSize,  kIterations, kEmptyCacheMode};

TEST(ParseSettingsLine, ReadsAWriteTestInFull) {
  const TestConfig config = parsed(
      "posix;FLUSH;prealloc;0;1024;0;1024;3;0;MEMORY;out\\data.bin;log.txt;results.csv;TRUE");
  EXPECT_FALSE(config.chainToNext);
  EXPECT_EQ(config.method, Method::posix);
  EXPECT_TRUE(block(config).flush);
  EXPECT_TRUE(block(config).prealloc);
  EXPECT_EQ(block(config).chunkWait, 0);
  EXPECT_EQ(block(config).chunkSize, 1048576);
  EXPECT_EQ(block(config).systemBuffer, 0);
  EXPECT_EQ(block(config).fileSize, 1048576);
  EXPECT_EQ(config.iterations, 3);
  EXPECT_EQ(block(config).emptyCacheMode, 0);
  EXPECT_EQ(config.sourceTemplate, "");
  EXPECT_EQ(config.destTemplate, "/data/bench/out/data.bin");
  EXPECT_EQ(config.logTemplate, "/data/bench/log.txt");
  EXPECT_EQ(config.resultsTemplate, "/data/bench/results.csv");
  EXPECT_TRUE(config.markDone);
}

TEST(ParseSettingsLine, MissingFieldsReadAsEmpty) {
  const TestConfig config = parsed("Stream;;;");
  EXPECT_EQ(config.method, Method::stream);
  EXPECT_FALSE(block(config).flush);
  EXPECT_FALSE(block(config).prealloc);
  EXPECT_EQ(block(config).chunkWait, 0);
  EXPECT_EQ(block(config).chunkSize, 0);
  EXPECT_EQ(block(config).systemBuffer, -1);
  EXPECT_EQ(block(config).fileSize, 0);
  EXPECT_EQ(config.iterations, 0);
  EXPECT_EQ(block(config).emptyCacheMode, 0);
  EXPECT_TRUE(config.sourceTemplate.isEmpty());
  EXPECT_TRUE(config.destTemplate.isEmpty());
  EXPECT_EQ(config.logTemplate, "/data/bench/");
  EXPECT_EQ(config.resultsTemplate, "/data/bench/");
  EXPECT_FALSE(config.markDone);
}

TEST(ParseSettingsLine, RecordsTheSettingsFileAndTheLineOfAnyLine) {
  for (const std::string_view line : {"Stream;;;", "next.bst", "nonsense"}) {
    TestConfig config;
    (void)parse(config, line);
    EXPECT_EQ(config.settingsPath, kSettingsPath) << line;
    EXPECT_EQ(narrowedText<500>(config.settingsLine).view(), line) << line;
  }
}

TEST(ParseSettingsLine, CopiesTheTemplatesIntoTheWorkingPaths) {
  const TestConfig config = parsed(lineWith(kDone, "0"));
  EXPECT_EQ(config.source, "/data/bench/in.bin");
  EXPECT_EQ(config.dest, "/data/bench/out.bin");
  EXPECT_EQ(config.logPath, "/data/bench/log.txt");
  EXPECT_EQ(config.resultsPath, "/data/bench/res.csv");
}

TEST(ParseSettingsLine, KeepsWhatALineDoesNotWrite) {
  TestConfig config;
  config.interfaces[1].name = "en1";
  config.settingsFileNumber = 5;
  EXPECT_TRUE(parse(config, lineWith(kIterations, "4")));
  EXPECT_EQ(config.interfaces[1].name, "en1");
  EXPECT_EQ(config.settingsFileNumber, 5);
}

TEST(ParseSettingsLine, KnowsFourMethodsInAnyCase) {
  const struct {
    const char* text;
    Method method;
  } cases[] = {{"Stream", Method::stream}, {"STREAM", Method::stream}, {"AnsiC", Method::ansiC},
               {"ansic", Method::ansiC},   {"Posix", Method::posix},   {"pOSIX", Method::posix},
               {"System", Method::system}, {"system", Method::system}, {"\tPosix ", Method::posix}};
  for (const auto& c : cases) {
    EXPECT_EQ(parsed(lineWith(kMethod, c.text)).method, c.method) << c.text;
  }
  EXPECT_EQ(static_cast<int>(Method::posix), 0);
  EXPECT_EQ(static_cast<int>(Method::system), 1);
  EXPECT_EQ(static_cast<int>(Method::stream), 2);
  EXPECT_EQ(static_cast<int>(Method::ansiC), 3);
}

TEST(ParseSettingsLine, RefusesAnyOtherMethod) {
  for (const char* text : {"", " ", "WinApi", "Streams", "Strea", "0", "Pos ix", "Posix\xA0"}) {
    EXPECT_FALSE(accepts(lineWith(kMethod, text))) << text;
  }
}

TEST(ParseSettingsLine, KeepsOneAsTrueForTheFirstTwoFlagsOnly) {
  const struct {
    const char* text;
    bool flush;
    bool prealloc;
    bool done;
  } cases[] = {{"true", true, true, true},       {" TRUE ", true, true, true},
               {"1", true, true, false},         {"flush", true, false, false},
               {"Flush", true, false, false},    {"prealloc", false, true, false},
               {"PREALLOC", false, true, false}, {"0", false, false, false},
               {"false", false, false, false},   {"11", false, false, false},
               {"done", false, false, false},    {"yes", false, false, false},
               {" ", false, false, false},       {"", false, false, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(block(parsed(lineWith(kFlush, c.text))).flush, c.flush) << c.text;
    EXPECT_EQ(block(parsed(lineWith(kPrealloc, c.text))).prealloc, c.prealloc) << c.text;
    EXPECT_EQ(parsed(lineWith(kDone, c.text)).markDone, c.done) << c.text;
  }
}

TEST(ParseSettingsLine, ReadsNumbersInTheirPlaces) {
  const TestConfig config = parsed("ansic;0;0;11;12;1;14;15;16;in.bin;out.bin;log.txt;res.csv");
  EXPECT_EQ(block(config).chunkWait, 11);
  EXPECT_EQ(block(config).stats.waitMs, 11);
  EXPECT_EQ(block(config).chunkSize, 12 * 1024);
  EXPECT_EQ(block(config).stats.stepBytes, 12 * 1024);
  EXPECT_EQ(block(config).systemBuffer, 1);
  EXPECT_EQ(block(config).fileSize, 14 * 1024);
  EXPECT_EQ(config.iterations, 15);
  EXPECT_EQ(block(config).emptyCacheMode, 16);
}

TEST(ParseSettingsLine, PauseIsWeighedByItsLow16Bits) {
  const TestConfig config = parsed(lineWith(kChunkWait, "65543"));
  EXPECT_EQ(block(config).chunkWait, 65543);
  EXPECT_EQ(block(config).stats.waitMs, 7);
  EXPECT_EQ(block(parsed(lineWith(kChunkWait, "-7"))).chunkWait, -7);
}

TEST(ParseSettingsLine, ReadsTheFirst249CharactersOfANumberIn32Bits) {
  const std::string zeros(248, '0');
  const struct {
    std::string text;
    std::int32_t value;
  } cases[] = {{"7", 7},
               {"-7", -7},
               {" 8\t", 8},
               {"007", 7},
               {" ", 0},
               {"-", 0},
               {"2147483647", 2147483647},
               {"4294967297", 1},
               {"-4294967297", -1},
               {"99999999999999999999", -1},
               {zeros + "5", 5},
               {zeros + "56", 5},
               {zeros + "056", 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(parsed(lineWith(kIterations, c.text)).iterations, c.value) << c.text;
  }
}

TEST(ParseSettingsLine, RefusesWhatIsNoNumberInEveryNumericField) {
  const std::string digits(249, '1');
  for (const Field field : kNumbers) {
    for (const std::string& text : {std::string("x"), std::string("+5"), std::string("--5"),
                                    std::string("5-"), std::string("1 2"), std::string("1.5"),
                                    std::string("0x1"), std::string("\xB2"), digits + "x"}) {
      EXPECT_FALSE(accepts(lineWith(field, text))) << "field " << field + 1 << ": " << text;
    }
  }
}

TEST(ParseSettingsLine, KeepsReadingAnEmptyNumberBeforeASeparatorAsTheSeparator) {
  for (const Field field : kNumbers) EXPECT_FALSE(accepts(lineWith(field, ""))) << field + 1;
}

TEST(ParseSettingsLine, RefusesACharacterWhoseLowByteIsADigit) {
  TestConfig config;
  EXPECT_TRUE(parseSettingsLine(config, u"Posix;0;0;5", kSettingsPath).accepted);
  EXPECT_FALSE(parseSettingsLine(config, u"Posix;0;0;\u0135", kSettingsPath).accepted);
}

TEST(ParseSettingsLine, TellsTheFieldThatItStoppedAtAndWhereItStands) {
  const struct {
    const char16_t* line;
    std::size_t field;
    std::size_t position;
  } cases[] = {
      {u"Poxis;0;0;5", 0, 0},   {u"posix;0;0;x", 3, 10},       {u"posix;0;0; \t12k ;4", 3, 12},
      {u"posix;0;0;;4", 3, 10}, {u"posix;0;0;5;-;4,5", 5, 14}, {u";posix", 0, 0},
  };
  for (const auto& c : cases) {
    TestConfig config;
    const ParsedLine parsed = parseSettingsLine(config, c.line, kSettingsPath);
    EXPECT_FALSE(parsed.accepted) << c.position;
    EXPECT_EQ(parsed.field, c.field) << c.position;
    EXPECT_EQ(parsed.position, c.position);
  }
}

TEST(ParseSettingsLine, StopsAtTheRefusedFieldAndSetsItToZero) {
  for (const Field field : kNumbers) {
    TestConfig config = parsed("ansic;0;0;91;92;1;93;94;95;old.bin;out.bin;log.txt;res.csv;true");
    EXPECT_FALSE(parse(config, lineWith(field, "x")));
    const ParameterBlock& p = block(config);
    // 91 to 95 and the buffer of 1 are from the line before, the line's own values are others.
    const std::int32_t before[] = {91, 92 * 1024, 1, 93 * 1024, 94, 95};
    const std::int32_t own[] = {0, 64 * 1024, 0, 64 * 1024, 1, 0};
    const std::int32_t now[] = {p.chunkWait, p.chunkSize,       p.systemBuffer,
                                p.fileSize,  config.iterations, p.emptyCacheMode};
    for (int i = 0; i < 6; ++i) {
      const int refused = field - kChunkWait;
      EXPECT_EQ(now[i], i < refused    ? own[i]
                        : i == refused ? 0
                                       : before[i])
          << "field " << field + 1 << ", value " << i;
    }
    EXPECT_EQ(p.stats.waitMs, p.chunkWait);
    EXPECT_EQ(p.stats.stepBytes, p.chunkSize);
    EXPECT_EQ(config.sourceTemplate, "/data/bench/old.bin");
    EXPECT_TRUE(config.markDone);
  }
}

TEST(ParseSettingsLine, RefusesALineAtItsFifthField) { EXPECT_FALSE(accepts("Stream;0;0;5;x")); }

TEST(ParseSettingsLine, KeepsANegativeChunkSizeOfAStream) {
  const TestConfig config = parsed("Stream;0;0;0;-5");
  EXPECT_EQ(block(config).chunkSize, -5120);
  EXPECT_EQ(block(config).stats.stepBytes, -5120);
  EXPECT_EQ(block(config).systemBuffer, -1);
}

TEST(ParseSettingsLine, ChunkSizeInKiBWrapsIn32Bits) {
  const struct {
    const char* text;
    std::int32_t bytes;
  } cases[] = {{"1", 1024},
               {"2097151", 2147482624},
               {"2097152", -2147483647 - 1},
               {"4194305", 1024},
               {"-1", -1024}};
  for (const auto& c : cases) {
    EXPECT_EQ(block(parsed(lineWith(kChunkSize, c.text))).chunkSize, c.bytes) << c.text;
  }
}

TEST(ParseSettingsLine, FileSizeIsAtMostOneGiB) {
  const struct {
    const char* text;
    std::int32_t bytes;
  } cases[] = {{"0", 0},
               {"1", 1024},
               {"1048575", 1073740800},
               {"1048576", 1073741824},
               {"1048577", 1073741824},
               {"4194305", 1073741824},
               {"2147483647", 1073741824},
               {"-5", -5120}};
  for (const auto& c : cases) {
    EXPECT_EQ(block(parsed(lineWith(kFileSize, c.text))).fileSize, c.bytes) << c.text;
  }
}

TEST(ParseSettingsLine, SystemBufferIsLimitedToFiveThenByTheMethod) {
  EXPECT_EQ(block(parsed("AnsiC;0;0;0;64;9;64;1;0;in.bin;out.bin")).systemBuffer, 1);
  const struct {
    const char* text;
    std::int32_t value;
  } cases[] = {{"4", 4}, {"5", 5}, {"6", 5}, {"9", 5}, {"-9", -9}};
  for (const auto& c : cases) {
    // A line that is refused at its next field shows the value before the method's limit.
    TestConfig config;
    EXPECT_FALSE(parse(config, std::string("AnsiC;0;0;0;64;") + c.text + ";x"));
    EXPECT_EQ(block(config).systemBuffer, c.value) << c.text;
  }
}

TEST(ParseSettingsLine, RelativePathsStartInTheSettingsFolder) {
  const struct {
    const char* text;
    const char* path;
  } cases[] = {{"out.bin", "/data/bench/out.bin"},
               {"sub\\out.bin", "/data/bench/sub/out.bin"},
               {" out.bin ", "/data/bench/out.bin"},
               {"x", "/data/bench/x"},
               {"/a", "/data/bench//a"},
               {"/ab", "/ab"},
               {R"(\\server\share)", "//server/share"},
               {"C:\\x", "C:/x"},
               {"C:/", "C:/"},
               {"C:x", "/data/bench/C:x"},
               {"CC:/x", "/data/bench/CC:/x"},
               {"<database>x", "<database>x"},
               {"[CFGPATH]x", "[CFGPATH]x"},
               {"[TEMP]/x", "[TEMP]/x"},
               {"x[temp]", "/data/bench/x[temp]"},
               {"[host]/x", "/data/bench/[host]/x"},
               {"<Data>x", "/data/bench/<Data>x"},
               {"a\xE9", "/data/bench/a\xE9"}};
  for (const auto& c : cases) {
    for (const Field field : kPaths) {
      EXPECT_EQ(pathTemplate(parsed(lineWith(field, c.text)), field), c.path)
          << "field " << field + 1 << ": " << c.text;
    }
  }
}

TEST(ParseSettingsLine, PathsAreNeitherFoldedNorCollapsed) {
  EXPECT_EQ(parsed(lineWith(kDest, "a//b/../c")).destTemplate, "/data/bench/a//b/../c");
}

TEST(ParseSettingsLine, PathsOfASettingsFileWithoutFolderStayAsTheyAre) {
  const TestConfig config = parsed("Posix;0;0;0;0;0;0;0;0;in.bin;/abs;log.txt", "run12.bst");
  EXPECT_EQ(config.sourceTemplate, "in.bin");
  EXPECT_EQ(config.destTemplate, "/abs");
  EXPECT_EQ(config.logTemplate, "log.txt");
  EXPECT_EQ(config.resultsTemplate, "");
}

TEST(ParseSettingsLine, OnlySourceAndDestCanBeMemory) {
  for (const char* text : {"MEMORY", "memory", " Memory "}) {
    EXPECT_EQ(parsed(lineWith(kSource, text)).sourceTemplate, "") << text;
    EXPECT_EQ(parsed(lineWith(kDest, text)).destTemplate, "") << text;
  }
  for (const Field field : {kLog, kResults}) {
    EXPECT_EQ(pathTemplate(parsed(lineWith(field, "MEMORY")), field), "/data/bench/MEMORY");
  }
  EXPECT_EQ(parsed(lineWith(kSource, "MEMORY.bin")).sourceTemplate, "/data/bench/MEMORY.bin");
}

TEST(ParseSettingsLine, KeepsResolvingAnEmptyLogOrResultsPath) {
  EXPECT_EQ(parsed(lineWith(kSource, " ")).sourceTemplate, "");
  EXPECT_EQ(parsed(lineWith(kDest, " ")).destTemplate, "");
  EXPECT_EQ(parsed(lineWith(kLog, " ")).logTemplate, "/data/bench/");
  EXPECT_EQ(parsed(lineWith(kResults, " ")).resultsTemplate, "/data/bench/");
}

TEST(ParseSettingsLine, KeepsReadingAnEmptyPathBeforeASeparatorAsAFileNamedSemicolon) {
  for (const Field field : kPaths) {
    EXPECT_EQ(pathTemplate(parsed(lineWith(field, "")), field), "/data/bench/;") << field + 1;
  }
}

TEST(ParseSettingsLine, PathsAreCutAt500Characters) {
  const std::string a(490, 'a');
  EXPECT_EQ(parsed(lineWith(kDest, a)).destTemplate, ("/data/bench/" + a.substr(2)).c_str());
  const std::string rooted = "/" + std::string(510, 'b');
  EXPECT_EQ(parsed(lineWith(kLog, rooted)).logTemplate, rooted.substr(0, 500).c_str());
}

TEST(ParseSettingsLine, ValidatesATestLine) {
  // A read test neither flushes nor preallocates.
  const TestConfig config = parsed("Posix;1;1;0;64;0;64;1;0;in.bin;MEMORY;log.txt;res.csv");
  EXPECT_FALSE(block(config).flush);
  EXPECT_FALSE(block(config).prealloc);
}

TEST(ParseSettingsLine, ChainLineNamesTheNextSettingsFile) {
  TestConfig config;
  config.iterations = 9;
  EXPECT_TRUE(parse(config, "next\\set2.BST"));
  EXPECT_TRUE(config.chainToNext);
  EXPECT_EQ(config.sourceTemplate, "next/set2.BST");
  EXPECT_EQ(config.iterations, 9);
}

TEST(ParseSettingsLine, KeepsTakingATestLineThatEndsInBstAsAChainLine) {
  const TestConfig config = parsed("Posix;0;0;0;64;0;64;1;0;in.bin;out.bin;log.txt;x.bst");
  EXPECT_TRUE(config.chainToNext);
  EXPECT_EQ(config.sourceTemplate, "Posix;0;0;0;64;0;64;1;0;in.bin;out.bin;log.txt;x.bst");
}

TEST(ParseSettingsLine, TestLineClearsTheChainFlagOfItsSlot) {
  TestConfig config = parsed("next.bst");
  EXPECT_TRUE(parse(config, lineWith(kDone, "0")));
  EXPECT_FALSE(config.chainToNext);
}

TEST(ParseSettingsLine, KeepsTheSlotsNumberInThePlaceholdersOfAChainLine) {
  TestConfig config;
  config.settingsFileNumber = 5;
  EXPECT_TRUE(parse(config, "[cfgPath]/[cfgName][cfgID]_[iter]_[cfgline].bst"));
  EXPECT_EQ(config.sourceTemplate, "/data/bench/run5_0_0.bst");
}

TEST(ParseSettingsLine, ChainPathIsCutAt500Characters) {
  const std::string name(600, 'n');
  const TestConfig config = parsed(name + ".bst");
  EXPECT_TRUE(config.chainToNext);
  EXPECT_EQ(config.sourceTemplate, name.substr(0, 500).c_str());
}

}  // namespace
}  // namespace marrowbench
