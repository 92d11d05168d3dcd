#include "paths/placeholders.h"

#include <gtest/gtest.h>

#include <string>

#include "fakes/fake_clock.h"
#include "helpers/environment_variable.h"
#include "paths/host_name.h"
#include "settings/test_config.h"

namespace marrowbench {
namespace {

class ExpandPlaceholders : public testing::Test {
 protected:
  ExpandPlaceholders() {
    config.settingsPath = "tests/copytest_init-12.bst";
    config.settingsFileNumber = 12;
  }

  [[nodiscard]] FixedString expanded(FixedString text, bool keepCfgPath = false) const {
    expandPlaceholders(config, text, 3, 4, keepCfgPath);
    return text;
  }

  FixedString expandedFor(const char* settingsPath, const char* text) {
    config.settingsPath = settingsPath;
    return expanded(text);
  }

  TestConfig config;

 private:
  const test::EnvironmentVariable temp{"TEMP", "/scratch"};
};

TEST_F(ExpandPlaceholders, ReplacesEachPlaceholder) {
  const struct {
    const char* text = nullptr;
    FixedString result;
  } cases[] = {{"[host]", hostName()},
               {"[date]", "1114_22132"},
               {"[iter]", "4"},
               {"[cfgline]", "3"},
               {"[cfgTaskID]", "3"},
               {"[cfgID]", "12"},
               {"[cfgLogName]", "_copytest_init-12_log"},
               {"[cfgNameID]", "copytest_init-12"},
               {"[cfgName]", "copytest"},
               {"[cfgPath]", "tests/"},
               {"[temp]", "/scratch/"}};
  for (const auto& c : cases) EXPECT_EQ(expanded(c.text), c.result) << c.text;
}

TEST_F(ExpandPlaceholders, MatchesInAnyCaseAndEverywhere) {
  EXPECT_EQ(expanded("[ITER]x[Iter]/[cFGlOGnAME][iter]"), "4x4/_copytest_init-12_log4");
}

TEST_F(ExpandPlaceholders, LineAndTaskAreTheSameNumber) {
  EXPECT_EQ(expanded("[cfgTaskID]_[cfgline]"), "3_3");
}

TEST_F(ExpandPlaceholders, NumbersMayBeNegative) {
  config.settingsFileNumber = -3;
  FixedString text = "[cfgID]_[iter]_[cfgline]";
  expandPlaceholders(config, text, -2147483647 - 1, -1, false);
  EXPECT_EQ(text, "-3_-1_-2147483648");
}

TEST_F(ExpandPlaceholders, DateIsTheSameThroughoutACall) {
  test::fakeClock().setSeconds(1'709'646'458);  // 5 March 2024, 13:47:38 UTC
  test::fakeClock().secondsPerReading = 60;
  EXPECT_EQ(expanded("[date]/[DATE]"), "0305_13473/0305_13473");
}

TEST_F(ExpandPlaceholders, LeavesTheSettingsFolderInTheTextWhenAsked) {
  EXPECT_EQ(expanded("[cfgPath]/[iter]", true), "[cfgPath]/4");
  EXPECT_EQ(expanded("[cfgPath]/[iter]", false), "tests/4");
}

TEST_F(ExpandPlaceholders, SettingsFolderIsEmptyForABareFileName) {
  EXPECT_EQ(expandedFor("run12.bst", "[cfgPath]out"), "out");
}

TEST_F(ExpandPlaceholders, UnknownWordsStay) {
  for (const char* text : {"[hosts]", "[cfg]", "host", "[iter", "<Database>x", "plain.txt"}) {
    EXPECT_EQ(expanded(text), text);
  }
}

TEST_F(ExpandPlaceholders, NamesComeFromTheSettingsFileName) {
  const struct {
    const char* path;
    const char* nameWithId;
    const char* name;
  } cases[] = {{"/data/bench/run12.bst", "run12", "run"},
               {"2024.bst", "2024", ""},
               {"tests/5-6-.bst", "5-6-", ""},
               {"tests/a_INIT.bst", "a_INIT", "a"},
               {"tests/a_init_init3.bst", "a_init_init3", "a_init"},
               {"tests/a_init.bst", "a_init", "a"},
               {"tests/a_initx.bst", "a_initx", "a_initx"},
               {"tests/_init7.bst", "_init7", ""},
               {"tests/run.v2.bst", "run.v2", "run.v"},
               {"tests/noext", "noext", "noext"}};
  for (const auto& c : cases) {
    EXPECT_EQ(expandedFor(c.path, "[cfgNameID]"), c.nameWithId) << c.path;
    EXPECT_EQ(expandedFor(c.path, "[cfgName]"), c.name) << c.path;
    const FixedString logName = FixedString("_").append(std::string(c.nameWithId)).append("_log");
    EXPECT_EQ(expandedFor(c.path, "[cfgLogName]"), logName) << c.path;
  }
}

TEST_F(ExpandPlaceholders, KeepsAnEarlySlashOrDotInTheName) {
  const struct {
    const char* path;
    const char* name;
  } cases[] = {{"ab/run.bst", "ab/run"}, {"abc/run.bst", "run"}, {"x.bst", "x.bst"},
               {"abc/x.bst", "x.bst"},   {"xy.bst", "xy"},       {"abc/xy.bst", "xy"}};
  for (const auto& c : cases) EXPECT_EQ(expandedFor(c.path, "[cfgNameID]"), c.name) << c.path;
}

// What one placeholder brings in is expanded by those after it and by no other.
TEST_F(ExpandPlaceholders, WorksInAFixedOrder) {
  const struct {
    const char* path;
    const char* text;
    const char* result;
  } cases[] = {
      {"tests/[host][date][iter].bst", "[cfgLogName]", "_[host][date][iter]_log"},
      {"tests/[cfgline][cfgTaskID][cfgID].bst", "[cfgLogName]", "_[cfgline][cfgTaskID][cfgID]_log"},
      {"tests/x[cfgLogName].bst", "[cfgNameID]", "x[cfgLogName]"},
      {"tests/x[cfgNameID].bst", "[cfgLogName]", "_xx[cfgNameID]_log"},
      {"tests/x[cfgNameID].bst", "[cfgName]", "x[cfgNameID]"},
      {"tests/x[cfgName]9.bst", "[cfgNameID]", "xx[cfgName]9"},
      {"tests/[cfgPath].bst", "[cfgName]", "tests/"},
      {"tests/[cfgName]/run.bst", "[cfgPath]", "tests/[cfgName]/"},
      {"[temp]dir/run.bst", "[cfgPath]", "/scratch/dir/"}};
  for (const auto& c : cases) EXPECT_EQ(expandedFor(c.path, c.text), c.result) << c.path;
  const test::EnvironmentVariable other("TEMP", "/[cfgPath]");
  EXPECT_EQ(expandedFor("tests/run.bst", "[temp]"), "/[cfgPath]/");
}

TEST_F(ExpandPlaceholders, EndsInANormalisedPath) {
  EXPECT_EQ(expanded("[temp]/a\\b//[iter]/../c"), "/scratch/a/b/c");
}

TEST_F(ExpandPlaceholders, CutsAt500Characters) {
  const std::string x(498, 'x');
  EXPECT_EQ(expanded((x + "[iter]").substr(0, 500).c_str()), (x + "[i").c_str());
  const std::string y(480, 'y');
  EXPECT_EQ(expanded((y + "[cfgNameID]z").c_str()), (y + "copytest_init-12z").c_str());
  const std::string w(487, 'w');
  EXPECT_EQ(expanded((w + "[cfgNameID]z").c_str()), (w + "copytest_init").c_str());
}

}  // namespace
}  // namespace marrowbench
