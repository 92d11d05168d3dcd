#include "marrowctl/fleet/table_patterns.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace marrowbench::ctl {
namespace {

using Texts = std::vector<std::string>;

// A plan of one file with a test for each table.
Plan planWith(const Texts& tables) {
  PlannedFile file;
  file.path = "/share/run/first12.bst";
  file.settingsFileNumber = 12;
  for (const std::string& table : tables) {
    PlannedLine line;
    line.test.table = table;
    line.test.configIndex = static_cast<int>(file.lines.size());
    file.lines.push_back(line);
  }
  Plan plan;
  plan.files.push_back(file);
  plan.hosts = {"c1", "c2"};
  plan.clients = 2;
  return plan;
}

TEST(TablePatterns, AreAnythingWhereTablesDiffer) {
  const struct {
    const char* table;
    const char* pattern;
  } cases[] = {{"/share/results.csv", "/share/results.csv"},
               {"/share/r_[host].csv", "/share/r_*.csv"},
               {"/share/[HOST]/[Date]_[iter].csv", "/share/*/*_*.csv"},
               {"[cfgPath]r_[host]_[cfgID].csv", "/share/run/r_*_12.csv"},
               {"/share/[host]_[cfgline].csv", "/share/*_0.csv"}};
  for (const auto& c : cases)
    EXPECT_EQ(tablePatterns(planWith({c.table})), Texts{c.pattern}) << c.table;
}

TEST(TablePatterns, TakeOtherCharactersAsTheyAre) {
  EXPECT_EQ(tablePatterns(planWith({"/a*b/[x]?/r.csv"})), Texts{"/a*b/[x]?/r.csv"}) << "a path";
  EXPECT_EQ(tablePatterns(planWith({"/a*b/[x]?/[host].csv"})), Texts{"/a\\*b/\\[x]\\?/*.csv"});
}

TEST(TablePatterns, AreTheRunTestsEachOnce) {
  Plan plan = planWith({"/b.csv", "", "/a_[host].csv", "/b.csv", "/never.csv", "/no.csv"});
  plan.files[0].lines[4].test.isRun = false;
  plan.files[0].lines[5].kind = LineKind::rejected;
  EXPECT_EQ(tablePatterns(plan), (Texts{"/b.csv", "/a_*.csv"}));
}

}  // namespace
}  // namespace marrowbench::ctl
