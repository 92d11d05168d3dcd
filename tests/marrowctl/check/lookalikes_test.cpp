#include "marrowctl/check/lookalikes.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

#include "marrowctl/plan/path_pattern.h"

namespace marrowbench::ctl {
namespace {

bool mayMeet(const char* written, const char* sought) {
  Lookalikes lookalikes;
  lookalikes.add(written);
  return lookalikes.mayMeet(sought);
}

TEST(Lookalikes, MayMeetWhereANumberMakesThemOne) {
  const struct {
    const char *written, *sought;
    bool may;
  } cases[] = {{"a_\x02", "a_\x02", true},      {"a_2", "a_\x02", true},
               {"a_1\x02", "a_\x02", true},     {"a_\x02", "a_1\x02", true},
               {"a_\x02_1", "a_2_\x02", true},  {"a_3\x02_1", "a_37_\x02", true},
               {"a_2_1", "a_\x02_1", true},     {"a_2_1", "a_\x02_2", false},
               {"a_\x02_1", "a_\x02_2", false}, {"b_2", "a_\x02", false},
               {"a_2_b", "a_\x02_", false},     {"a_\x02_\x02", "a_1_\x02", false},
               {"b", "a_\x02_\x02", true},      {"a_x", "a_\x02", false}};
  for (const auto& c : cases) {
    EXPECT_EQ(mayMeet(c.written, c.sought), c.may) << c.written << " and " << c.sought;
  }
}

// All names of a pattern with numbers small enough to be tried.
std::set<std::string> namesOf(const std::string& pattern) {
  std::set<std::string> names;
  for (int i = 0; i < 130; ++i) names.insert(filledIn(pattern, {{}, std::to_string(i), {}}));
  return names;
}

bool doMeet(const std::string& written, const std::string& sought) {
  const std::set<std::string> names = namesOf(written);
  for (const std::string& name : namesOf(sought)) {
    if (names.contains(name)) return true;
  }
  return false;
}

// Pieces in a row, at most one of which is a mark.
std::string randomPattern(std::mt19937& engine) {
  static const std::string pieces[] = {"a", "_", "1", "2", "12", "0", "\x02"};
  std::string pattern;
  for (auto count = 1 + engine() % 4; count > 0; --count) {
    const bool hasMark = pattern.find(kIterationMark) != std::string::npos;
    pattern += pieces[engine() % (hasMark ? 6 : 7)];
  }
  return pattern;
}

TEST(Lookalikes, NeverMissNamesThatMeet) {
  std::mt19937 engine(7);
  int met = 0;
  int ruledOut = 0;
  for (int i = 0; i < 12000; ++i) {
    const std::string written = randomPattern(engine);
    const std::string sought = randomPattern(engine);
    if (sought.find(kIterationMark) == std::string::npos) continue;
    const bool may = mayMeet(written.c_str(), sought.c_str());
    const bool meets = doMeet(written, sought);
    ASSERT_TRUE(may || !meets) << written << " and " << sought;
    met += meets ? 1 : 0;
    ruledOut += may ? 0 : 1;
  }
  EXPECT_GT(met, 100);
  EXPECT_GT(ruledOut, 500);
}

}  // namespace
}  // namespace marrowbench::ctl
