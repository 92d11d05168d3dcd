#include "settings/settings_lines.h"

#include <gtest/gtest.h>

#include <string_view>

namespace marrowbench {
namespace {

TEST(SettingsFileNumberOf, ReadsTheTrailingRunOfDigitsAndMinus) {
  const struct {
    const char* path;
    std::int32_t number;
  } cases[] = {{"tests/run12.bst", 12}, {"test-3.bst", -3},      {"x/y/cfg_0042.bst", 42},
               {"tests/RUN12.BST", 12}, {"tests/run.bst", 0},    {"tests/run1-2.bst", 1},
               {"tests/run--5.bst", 0}, {"tests/12/run.bst", 0}, {"tests/4294967297.bst", 1},
               {"runs4.bst5.bst", 45},  {"123456.bst", 123456}};
  for (const auto& c : cases) EXPECT_EQ(settingsFileNumberOf(c.path), c.number) << c.path;
}

TEST(SettingsFileNumberOf, KeepsOffTheFirstThreeCharacters) {
  const struct {
    const char* path;
    std::int32_t number;
  } cases[] = {{"ab7.bst", 0},     {"run-3.bst", 0}, {"abc12.bst", 0},  {"a/12.bst", 0},
               {"abcd12.bst", 12}, {"12.bst", 12},   {"1-2345.bst", 1}, {".bst", 0}};
  for (const auto& c : cases) EXPECT_EQ(settingsFileNumberOf(c.path), c.number) << c.path;
}

SettingsLine take(std::string_view bytes, TestConfig& slot) {
  return takeSettingsLine({std::string(bytes), bytes.size()}, "/srv/run12.bst", 12, slot);
}

TEST(TakeSettingsLine, TellsWhatALineIs) {
  const struct {
    std::string_view line;
    LineKind kind;
  } cases[] = {
      {"", LineKind::nothing},        {" \t\r", LineKind::nothing},
      {"# posix", LineKind::nothing}, {" # posix", LineKind::rejected},
      {"posix;x", LineKind::test},    {" next.BST \r", LineKind::chain},
      {"poxis", LineKind::rejected},  {"posix;;;;", LineKind::rejected},
  };
  for (const auto& c : cases) {
    TestConfig slot;
    EXPECT_EQ(take(c.line, slot).kind, c.kind) << c.line;
  }
}

TEST(TakeSettingsLine, ShowsTheParametersBeforeTheyWereMadeToFit) {
  TestConfig slot;
  const SettingsLine taken = take("ansic;1;1;7;0;9;4;1;0;a.bin;b.bin", slot);
  EXPECT_TRUE(taken.asWritten.prealloc);
  EXPECT_EQ(taken.asWritten.chunkSize, 0);
  EXPECT_EQ(taken.asWritten.systemBuffer, 5);
  const ParameterBlock& fitting = slot.parameters.parameters;
  EXPECT_FALSE(fitting.prealloc);
  EXPECT_EQ(fitting.chunkSize, 1048576);
  EXPECT_EQ(fitting.systemBuffer, -1);
}

TEST(TakeSettingsLine, KeepsExpandingAChainPathWithTheSlotsOldNumber) {
  TestConfig slot;
  slot.settingsFileNumber = 7;
  (void)take("next[cfgID].bst", slot);
  EXPECT_EQ(slot.sourceTemplate, FixedString("next7.bst"));
  EXPECT_EQ(slot.settingsFileNumber, 12);
}

TEST(TakeSettingsLine, RejectedLineLeavesTheSlotsNumber) {
  TestConfig slot;
  slot.settingsFileNumber = 7;
  (void)take("poxis", slot);
  EXPECT_EQ(slot.settingsFileNumber, 7);
}

}  // namespace
}  // namespace marrowbench
