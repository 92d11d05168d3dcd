#include "marrowctl/plan/expansion.h"

#include <gtest/gtest.h>

#include <string>

#include "fakes/fake_clock.h"
#include "helpers/environment_variable.h"
#include "marrowctl/plan/client_paths.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/plan/pattern_maker.h"
#include "paths/done_path.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

// Without patterns, as made by hand.
PlannedTest testWith(const char* source, const char* dest = "", int configIndex = 0) {
  PlannedTest test;
  test.configIndex = configIndex;
  test.source = source;
  test.dest = dest;
  return test;
}

PlannedFile fileAt(const char* path) {
  PlannedFile file;
  file.path = path;
  return file;
}

std::string sourceOf(const char* pathTemplate, const std::string& host) {
  return expandPaths(fileAt("set/run.bst"), testWith(pathTemplate), host, 4).source;
}

TEST(ExpandPaths, HostIsCutAtItsFirstDotUnlessItBeginsWithIt) {
  EXPECT_EQ(sourceOf("[HOST]/[host]", "c1.site.org"), "c1/c1");
  EXPECT_EQ(sourceOf("a/[host]", ".c1.site"), "a/.c1.site");
  EXPECT_EQ(sourceOf("a/[host]", "LocalHost"), "a/NoHostNameSet_");
}

TEST(ExpandPaths, SourceAndDestAreExpandedTwiceLogAndTableOnce) {
  PlannedTest test = testWith("a////[[cfgNameID]iter]", "b////c");
  test.log = test.table = "a////b";
  const ExpandedPaths paths = expandPaths(fileAt("7.bst"), test, "c1", 4);
  EXPECT_EQ(paths.dest, "b/c");
  EXPECT_EQ(paths.log, "a//b");
  EXPECT_EQ(paths.table, "a//b");
}

TEST(ExpandPaths, MemoryIsAnEmptyPath) {
  EXPECT_EQ(sourceOf("a/../[host]", "memory"), "");
  EXPECT_EQ(sourceOf("a/../[host]", "memory1"), "memory1");
}

TEST(ExpandPaths, IterationAndLineAreThoseOfTheTest) {
  const ExpandedPaths paths =
      expandPaths(fileAt("set/run.bst"), testWith("[iter]_[cfgline]", "", 7), "c1", 2000000000);
  EXPECT_EQ(paths.source, "2000000000_7");
}

TEST(ExpandPaths, PatternIsUsedWhereItIsExact) {
  PlannedTest test = testWith("a/[host]");
  test.patterns.source = {"a/\x01.\x02.\x03", true};
  PlannedFile file = fileAt("set/run.bst");
  file.date = "now";
  EXPECT_EQ(expandPaths(file, test, "c1.site", 5).source, "a/c1.5.now");
  EXPECT_EQ(expandPaths(file, test, std::string(64, 'h'), 5).source,
            "a/" + std::string(64, 'h') + ".5.now");
  EXPECT_EQ(expandPaths(file, test, std::string(65, 'h'), 5).source, "a/" + std::string(65, 'h'));
  EXPECT_EQ(expandPaths(file, test, "c 1", 5).source, "a/c 1");
  test.patterns.source.isExact = false;
  EXPECT_EQ(expandPaths(file, test, "c1.site", 5).source, "a/c1");
}

TEST(ExpandPaths, StandardInputIsAFileNamedDashInTheCurrentFolder) {
  PlannedTest test = testWith("[cfgPath]x", "a/[cfgNameID]");
  const ExpandedPaths paths = expandPaths(fileAt("-"), test, "c1", 0);
  EXPECT_EQ(paths.source, "x");
  EXPECT_EQ(paths.dest, "a/-");
}

TEST(ClientPaths, LeaveAMarkForTheIterationInFamilies) {
  const PlannedFile file = fileAt("set/run.bst");
  PlannedTest test = testWith("a/[host]_[ITER]", "b");
  test.log = "////[iter]";
  const ClientPaths client("c1.site");
  EXPECT_EQ(client.family(file, test, test.patterns.source), "a/c1_\x02");
  EXPECT_EQ(client.family(file, test, test.patterns.dest), "b");
  EXPECT_EQ(client.family(file, test, test.patterns.log), "///\x02");
  test.patterns.source = {"a/\x01.\x02", true};
  EXPECT_EQ(client.family(file, test, test.patterns.source), "a/c1.\x02");
}

TEST(FilledIn, LeavesMarksWithoutAValue) {
  EXPECT_EQ(filledIn("\x01/\x02\x02.\x03", {"c", "1", "d"}), "c/11.d");
  EXPECT_EQ(filledIn("\x01/\x02\x02.\x03", {{}, "1", {}}), "\x01/11.\x03");
  EXPECT_EQ(filledIn("plain", {"c", "1", "d"}), "plain");
}

TEST(Holds, FindsAPlaceholderInAnyCase) {
  EXPECT_TRUE(holds("a/[HOST].bin", "[host]"));
  EXPECT_FALSE(holds("a/[hos].bin", "[host]"));
}

TEST(MarkerOf, IsThatOfTheProgram) {
  EXPECT_EQ(markerOf(fileAt("tests/run12.bst"), "c1.site"), "tests/_run12_log/done__c1");
  EXPECT_EQ(markerOf(fileAt("-"), "c1"), "_-_log/done__c1");
}

// What is made for patterns by the reading of a settings file.
class Patterns : public testing::Test {
 protected:
  PathPattern destPattern(const std::string& dest, const char* path = "set/test12.bst") {
    PlannedTest test = testWith("", dest.c_str(), 3);
    return PatternMaker(path, 12).patternsOf(test).dest;
  }
  bool isExact(const std::string& dest, const char* path = "set/test12.bst") {
    return destPattern(dest, path).isExact;
  }
};

TEST_F(Patterns, HoldEverythingButHostIterationAndDate) {
  EXPECT_EQ(destPattern("x/[host]/[cfgline]_[cfgNameID]_[iter][Date]").text,
            "x/\x01/3_test12_\x02\x03");
  EXPECT_EQ(destPattern("x/[what]").text, "x/[what]");
  EXPECT_TRUE(isExact("x/[host]/[cfgline]_[cfgNameID]_[iter][Date]"));
  EXPECT_TRUE(isExact("x/[what]"));
}

TEST_F(Patterns, AreNotExactWhereTheValueCouldBecomePartOfAPlaceholder) {
  EXPECT_FALSE(isExact("x/[[host]]"));
  EXPECT_FALSE(isExact("x/[cfg[iter]"));
  EXPECT_FALSE(isExact("x/[host"));
  EXPECT_FALSE(isExact("x/]"));
  EXPECT_FALSE(isExact("x/[host]", "[a/test12.bst"));
}

TEST_F(Patterns, AreNotExactWhereAPathCouldBeCut) {
  // Of each value the longest: the name of a host, a number, the date, and what the file's path
  // gives.
  EXPECT_TRUE(isExact("/" + std::string(434, 'x') + "[host]"));
  EXPECT_FALSE(isExact("/" + std::string(435, 'x') + "[host]"));
  EXPECT_TRUE(isExact("/" + std::string(487, 'x') + "[iter]"));
  EXPECT_FALSE(isExact("/" + std::string(488, 'x') + "[iter]"));
  EXPECT_TRUE(isExact("/" + std::string(488, 'x') + "[date]"));
  EXPECT_FALSE(isExact("/" + std::string(489, 'x') + "[date]"));
  const test::EnvironmentVariable temp("TEMP", "/t");
  EXPECT_TRUE(isExact("/" + std::string(471, 'x') + "[cfgPath]"));
  EXPECT_FALSE(isExact("/" + std::string(472, 'x') + "[cfgPath]"));
}

TEST_F(Patterns, AreNotExactWhereAHostCouldBeTheMemory) {
  EXPECT_FALSE(isExact("[host]"));
  EXPECT_FALSE(isExact("Mem[host]y"));
  EXPECT_FALSE(isExact("mem[host]"));
  EXPECT_TRUE(isExact("mem[host]z"));
  EXPECT_TRUE(isExact("data_[host]"));
  EXPECT_TRUE(isExact("[host].bin"));
  EXPECT_EQ(destPattern("./[host]").text, "./\x01");
  EXPECT_TRUE(isExact("./[host]"));
}

TEST_F(Patterns, OfTheMemoryAreEmpty) {
  EXPECT_TRUE(destPattern("").isEmpty() && isExact(""));
  EXPECT_TRUE(destPattern("memory").isEmpty() && isExact("memory"));
}

TEST_F(Patterns, AreNotExactForMarks) { EXPECT_FALSE(isExact("x/\x01")); }

TEST_F(Patterns, DifferForEachLineThatShowsItsNumber) {
  PatternMaker maker("set/test12.bst", 12);
  for (const char* name : {"x/[cfgLine]", "x/[cfgtaskid]"}) {
    EXPECT_EQ(maker.patternsOf(testWith("", name, 3)).dest.text, "x/3");
    EXPECT_EQ(maker.patternsOf(testWith("", name, 4)).dest.text, "x/4");
  }
}

}  // namespace
}  // namespace marrowbench::ctl
