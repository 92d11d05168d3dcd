#include "settings/test_config.h"

#include <gtest/gtest.h>

namespace marrowbench {
namespace {

TEST(TestConfig, FreshRecordHasNoPathsAndNoLine) {
  const TestConfig config;
  for (const FixedString* path :
       {&config.sourceTemplate, &config.destTemplate, &config.logTemplate, &config.resultsTemplate,
        &config.settingsPath, &config.source, &config.dest, &config.logPath, &config.resultsPath}) {
    EXPECT_TRUE(path->isEmpty());
  }
  EXPECT_TRUE(config.settingsLine.isEmpty());
}

TEST(TestConfig, FreshRecordHasNoSystemBuffer) {
  const TestConfig config;
  EXPECT_TRUE(config.parameters.errorText.isEmpty());
  const ParameterBlock& p = config.parameters.parameters;
  EXPECT_EQ(p.systemBuffer, -1);
  EXPECT_EQ(p.chunkWait, 0);
  EXPECT_EQ(p.chunkSize, 0);
  EXPECT_FALSE(p.prealloc);
  EXPECT_FALSE(p.flush);
}

TEST(TestConfig, FreshRecordHasResetStatistics) {
  const TestConfig config;
  const RunStats& stats = config.parameters.parameters.stats;
  EXPECT_EQ(stats.bytes, 0);
  EXPECT_EQ(stats.waitMs, 0);
  EXPECT_EQ(stats.files, 0);
  EXPECT_EQ(stats.dataMs, 0);
  EXPECT_EQ(stats.runWord, 1);
  EXPECT_EQ(stats.chunks, 0);
  EXPECT_EQ(stats.stepBytes, 1048576);
}

TEST(TestConfig, FreshRecordKnowsNoInterfaceAndNoSettingsFile) {
  const TestConfig config;
  for (const NetworkInterface& interface : config.interfaces) {
    EXPECT_TRUE(interface.name.isEmpty());
    EXPECT_EQ(interface.bitsPerSecond, 0);
    EXPECT_EQ(interface.mtu, 0);
  }
  EXPECT_EQ(config.interfaceCount, 0);
  // A chain line in a slot that was never used reads its "[cfgID]" from here.
  EXPECT_EQ(config.settingsFileNumber, 0);
  EXPECT_FALSE(config.markDone);
  EXPECT_FALSE(config.chainToNext);
}

TEST(TestConfig, TableHasRoomForTwoHundredTests) {
  EXPECT_EQ(kMaxTestLines, 200);
  EXPECT_EQ(sizeof(TestConfig) * kMaxTestLines, 1492800U);
}

TEST(TestTypeOf, EmptyOrMemoryPathStandsForMemory) {
  const struct {
    const char* source;
    const char* dest;
    TestType type;
  } cases[] = {{"a", "b", TestType::copy},       {"a", "", TestType::read},
               {"a", "MEMORY", TestType::read},  {"a", "Memory", TestType::read},
               {"", "b", TestType::write},       {"memory", "b", TestType::write},
               {"", "", TestType::read},         {"MEMORY", "memory", TestType::read},
               {"MEMORY ", "b", TestType::copy}, {"a", "MEMORY/b", TestType::copy}};
  for (const auto& c : cases) {
    EXPECT_EQ(testTypeOf(c.source, c.dest), c.type) << c.source << " to " << c.dest;
  }
}

}  // namespace
}  // namespace marrowbench
