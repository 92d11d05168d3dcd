// The plan is what the program does: random settings files through both.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "helpers/environment_variable.h"
#include "helpers/printed.h"
#include "helpers/temp_folder.h"
#include "main/settings_loader.h"
#include "marrowctl/plan/expansion.h"
#include "marrowctl/plan/make_plan.h"
#include "paths/host_name.h"
#include "paths/path_text.h"
#include "paths/placeholders.h"

namespace marrowbench::ctl {
namespace {

class Random {
 public:
  explicit Random(unsigned seed) : engine(seed) {}

  std::size_t below(std::size_t limit) { return engine() % limit; }

  template <class Values>
  const auto& oneOf(const Values& values) {
    return values[below(std::size(values))];
  }

  // Pieces in a row.
  std::string text(const std::vector<std::string>& pieces, std::size_t most) {
    std::string result;
    for (std::size_t i = below(most + 1); i > 0; --i) result += oneOf(pieces);
    return result;
  }

 private:
  std::mt19937 engine;
};

const std::vector<std::string> kPathPieces = {"[host]",
                                              "[HOST]",
                                              "[iter]",
                                              "[cfgline]",
                                              "[cfgTaskID]",
                                              "[cfgID]",
                                              "[cfgLogName]",
                                              "[cfgNameID]",
                                              "[cfgName]",
                                              "[cfgPath]",
                                              "[temp]",
                                              "[date]",
                                              "[nothing]",
                                              "/",
                                              "/",
                                              "//",
                                              "../",
                                              "./",
                                              "\\",
                                              "a",
                                              "bc",
                                              "_init",
                                              "-3",
                                              ".bin",
                                              "memory",
                                              "[",
                                              "]",
                                              "[cfg",
                                              "line]",
                                              "\x01",
                                              std::string(200, 'x')};
const std::vector<std::string> kHosts = {
    "c1",   "node-7_b",           "memory",  "x.y", ".x",
    "line", std::string(90, 'h'), "a[iter]", "a b", "NoHostNameSet_"};
const std::vector<std::string> kNumbers = {
    "0", "1", "-1",  "5",  "64", "1024", "2097152", "4294967297", "99999999999999999999",
    "",  "x", " 7 ", "1 2"};

std::string randomPath(Random& random) {
  if (random.below(5) == 0)
    return random.oneOf(std::vector<std::string>{"MEMORY", "", "memory ", " "});
  return random.text(kPathPieces, 7);
}

std::string randomLine(Random& random) {
  static const std::vector<std::string> methods = {"Posix", "ansic", "Stream", "System", "posix "};
  switch (random.below(20)) {
    case 0: return random.text({"#", " ", "Posix", ";", "x.bst", "\t"}, 4);
    case 1: return "";
    case 2: return random.text({std::string("\0", 1), "Posix;", ";", "\x80"}, 9);
    default: break;
  }
  std::string line = random.oneOf(methods);
  const std::size_t fields = random.below(10) == 0 ? random.below(14) : 14;
  for (std::size_t i = 1; i < fields; ++i) {
    line += ";";
    if (i < 3)
      line += random.oneOf(std::vector<std::string>{"1", "0", "flush", "TRUE", "prealloc", ""});
    // Mostly taken, so that the lines reach their paths.
    else if (i < 9)
      line +=
          random.below(40) == 0
              ? random.oneOf(kNumbers)
              : random.oneOf(std::vector<std::string>{"0", "3", "-2", "512", "2097153", "1048577"});
    else if (i < 13)
      line += randomPath(random);
    else
      line += random.oneOf(std::vector<std::string>{"true", "1", "True ", ""});
  }
  return line;
}

std::string randomFile(Random& random) {
  std::string content;
  const std::size_t lines = random.below(40) == 0 ? 230 : random.below(12);
  for (std::size_t i = 0; i < lines; ++i) content += randomLine(random) + "\n";
  if (random.below(2) == 0)
    content += random.text({"[cfgID]", "[cfgPath]", "n", "\\", "[host]"}, 3) + ".bst\n";
  return content + (random.below(3) == 0 ? "x;y" : "");
}

void expectSameParameters(const ParameterBlock& a, const ParameterBlock& b) {
  EXPECT_EQ(a.systemBuffer, b.systemBuffer);
  EXPECT_EQ(a.chunkWait, b.chunkWait);
  EXPECT_EQ(a.chunkSize, b.chunkSize);
  EXPECT_EQ(a.prealloc, b.prealloc);
  EXPECT_EQ(a.flush, b.flush);
  EXPECT_EQ(a.emptyCacheMode, b.emptyCacheMode);
  EXPECT_EQ(a.fileSize, b.fileSize);
  EXPECT_EQ(a.stats.waitMs, b.stats.waitMs);
  EXPECT_EQ(a.stats.stepBytes, b.stats.stepBytes);
}

void expectSameTest(const PlannedTest& test, const TestConfig& record) {
  EXPECT_EQ(test.method, record.method);
  expectSameParameters(test.used, record.parameters.parameters);
  EXPECT_EQ(test.iterations, record.iterations);
  EXPECT_EQ(test.markDone, record.markDone);
  EXPECT_EQ(test.source, record.sourceTemplate.view());
  EXPECT_EQ(test.dest, record.destTemplate.view());
  EXPECT_EQ(test.log, record.logTemplate.view());
  EXPECT_EQ(test.table, record.resultsTemplate.view());
}

// The program's own steps, with another host's name put in before them.
FixedString expandedAs(const TestConfig& record, FixedString path, const FixedString& host,
                       std::int32_t index, std::int32_t iteration) {
  path.replaceAll("[host]", host);
  expandPlaceholders(record, path, index, iteration, false);
  return path;
}

void expectSamePaths(const PlannedFile& file, const PlannedTest& test, const TestConfig& record,
                     const std::string& rawHost, std::int32_t iteration) {
  const FixedString host = hostNameFrom(rawHost);
  const auto once = [&](const FixedString& path) {
    return expandedAs(record, path, host, test.configIndex, iteration);
  };
  const auto twice = [&](const FixedString& path) {
    const FixedString first = once(path);
    return isMemoryPath(first) ? FixedString() : once(first);
  };
  const ExpandedPaths paths = expandPaths(file, test, rawHost, iteration);
  EXPECT_EQ(paths.source, twice(record.sourceTemplate).view()) << test.source << " on " << rawHost;
  EXPECT_EQ(paths.dest, twice(record.destTemplate).view()) << test.dest << " on " << rawHost;
  EXPECT_EQ(paths.log, once(record.logTemplate).view()) << test.log << " on " << rawHost;
  EXPECT_EQ(paths.table, once(record.resultsTemplate).view()) << test.table << " on " << rawHost;
}

struct Compared {
  int tests = 0, fromPattern = 0, inFull = 0, chains = 0;
};

void compare(const PlannedFile& file, Random& random, std::vector<TestConfig>& table,
             Compared& sum) {
  LoadedSettings loaded;
  (void)marrowbench::test::printedBy([&] { loaded = loadSettings(file.path.c_str(), table); });
  EXPECT_EQ(file.chain, loaded.nextPath.view());
  if (!file.chain.empty()) ++sum.chains;
  std::int32_t count = 0;
  for (const PlannedLine& line : file.lines) {
    if (line.kind != LineKind::test || !line.test.isRun) continue;
    ASSERT_EQ(line.test.configIndex, count);
    const TestConfig& record = table[static_cast<std::size_t>(count++)];
    expectSameTest(line.test, record);
    EXPECT_EQ(record.settingsFileNumber, file.settingsFileNumber);
    for (const std::int32_t iteration : {0, 12}) {
      expectSamePaths(file, line.test, record, random.oneOf(kHosts), iteration);
    }
    ++(line.test.patterns.dest.isExact ? sum.fromPattern : sum.inFull);
  }
  EXPECT_EQ(count, loaded.count);
  sum.tests += count;
}

class PlanOfRandomFiles : public testing::Test {
 protected:
  // A run over `path` and all that it chains to, in the plan and in the program.
  void comparePlan(const std::string& path, Random& random, Compared& sum) {
    std::istringstream none;
    // For this machine: a chain path may hold its name.
    const Plan plan = makePlan({{path}, {}, 0}, none);
    std::vector<TestConfig> table(kMaxTestLines);
    for (const PlannedFile& file : plan.files) compare(file, random, table, sum);
  }

  test::WorkingFolder folder;
};

TEST_F(PlanOfRandomFiles, IsWhatTheProgramLoads) {
  Compared sum;
  for (unsigned seed = 0; seed < 500 && !HasFailure(); ++seed) {
    Random random(seed);
    const std::string path = random.oneOf(
        std::vector<std::string>{"run12.bst", "b_init-3.bst", "[x.bst", "7.bst", "./q.bst"});
    marrowbench::test::writeFile(path.c_str(), randomFile(random));
    for (const char* next : {"n0.bst", "n12.bst", "n-3.bst", "12.bst", "0n.bst", "12n.bst", "n.bst",
                             "nn.bst", "0.bst"}) {
      marrowbench::test::writeFile(next, randomFile(random));
    }
    comparePlan(path, random, sum);
    EXPECT_FALSE(HasFailure()) << "seed " << seed;
  }
  // The comparison covers what it is meant for.
  EXPECT_GT(sum.tests, 2000);
  EXPECT_GT(sum.fromPattern, 500);
  EXPECT_GT(sum.inFull, 500);
  EXPECT_GT(sum.chains, 200);
}

TEST_F(PlanOfRandomFiles, IsWhatTheProgramLoadsWithAnOddTemporaryFolder) {
  const test::EnvironmentVariable temp("TEMP", "/[iter]/x");
  Compared sum;
  for (unsigned seed = 1000; seed < 1050 && !HasFailure(); ++seed) {
    Random random(seed);
    marrowbench::test::writeFile("a.bst", randomFile(random));
    comparePlan("a.bst", random, sum);
    EXPECT_FALSE(HasFailure()) << "seed " << seed;
  }
}

}  // namespace
}  // namespace marrowbench::ctl
