#include "marrowctl/plan/expansion.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "fakes/fake_clock.h"
#include "helpers/temp_folder.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/plan/path_pattern.h"
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

TEST(ExpandPaths, PatternIsUsedWhereItIsSure) {
  PlannedTest test = testWith("a/[host]");
  test.patterns.source = "a/\x01.\x02";
  const PlannedFile file = fileAt("set/run.bst");
  EXPECT_EQ(expandPaths(file, test, "c1.site", 5).source, "a/c1.5");
  EXPECT_EQ(expandPaths(file, test, std::string(64, 'h'), 5).source,
            "a/" + std::string(64, 'h') + ".5");
  EXPECT_EQ(expandPaths(file, test, std::string(65, 'h'), 5).source, "a/" + std::string(65, 'h'));
  EXPECT_EQ(expandPaths(file, test, "c 1", 5).source, "a/c 1");
}

TEST(ExpandPaths, StandardInputIsAFileNamedDashInTheCurrentFolder) {
  PlannedTest test = testWith("[cfgPath]x", "a/[cfgNameID]");
  const ExpandedPaths paths = expandPaths(fileAt("-"), test, "c1", 0);
  EXPECT_EQ(paths.source, "x");
  EXPECT_EQ(paths.dest, "a/-");
}

TEST(ExpandFamilies, LeaveAMarkForTheIteration) {
  const PlannedFile file = fileAt("set/run.bst");
  PlannedTest test = testWith("a/[host]_[ITER]", "b");
  EXPECT_EQ(expandFamilies(file, test, "c1").source, "a/c1_\x02");
  EXPECT_EQ(expandFamilies(file, test, "c1").dest, "b");
  test.patterns.source = "a/\x01.\x02";
  EXPECT_EQ(expandFamilies(file, test, "c1").source, "a/c1.\x02");
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
  std::string destPattern(const std::string& dest, const char* path = "set/test12.bst") {
    PlannedTest test = testWith("", dest.c_str(), 3);
    return PatternMaker(path, 12).patternsOf(test).dest;
  }
};

TEST_F(Patterns, HoldEverythingButHostAndIteration) {
  EXPECT_EQ(destPattern("x/[host]/[cfgline]_[cfgNameID]_[iter]"), "x/\x01/3_test12_\x02");
  EXPECT_EQ(destPattern("x/[what]"), "x/[what]");
}

TEST_F(Patterns, AreNotMadeWhereTheValueCouldBecomePartOfAPlaceholder) {
  EXPECT_EQ(destPattern("x/[[host]]"), "");
  EXPECT_EQ(destPattern("x/[cfg[iter]"), "");
  EXPECT_EQ(destPattern("x/[host"), "");
  EXPECT_EQ(destPattern("x/]"), "");
  EXPECT_EQ(destPattern("x/[host]", "[a/test12.bst"), "");
}

TEST_F(Patterns, AreNotMadeWhereAPathCouldBeCut) {
  EXPECT_NE(destPattern("/" + std::string(429, 'x') + "[host]"), "");
  EXPECT_EQ(destPattern("/" + std::string(430, 'x') + "[host]"), "");
}

TEST_F(Patterns, AreNotMadeWhereAHostCouldBeTheMemory) {
  EXPECT_EQ(destPattern("[host]"), "");
  EXPECT_EQ(destPattern("memory"), "");
  EXPECT_EQ(destPattern("./[host]"), "./\x01");
}

TEST_F(Patterns, AreNotMadeOfMarks) { EXPECT_EQ(destPattern("x/\x01"), ""); }

TEST_F(Patterns, DifferForEachLineThatShowsItsNumber) {
  PatternMaker maker("set/test12.bst", 12);
  for (const char* name : {"x/[cfgLine]", "x/[cfgtaskid]"}) {
    EXPECT_EQ(maker.patternsOf(testWith("", name, 3)).dest, "x/3");
    EXPECT_EQ(maker.patternsOf(testWith("", name, 4)).dest, "x/4");
  }
}

}  // namespace
}  // namespace marrowbench::ctl
