#include "marrowctl/support/host_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

using Names = std::vector<std::string>;

TEST(NamesOf, TakesNamesAndRangesInTheirOrder) {
  const struct {
    const char* list;
    Names names;
  } cases[] = {{"c1", {"c1"}},
               {"b,a", {"b", "a"}},
               {"c[08-11]", {"c08", "c09", "c10", "c11"}},
               {"c[9-10]", {"c9", "c10"}},
               {"c[099-101]", {"c099", "c100", "c101"}},
               {"c[01-03],c100", {"c01", "c02", "c03", "c100"}},
               {"c[1,4-5]x,d", {"c1x", "c4x", "c5x", "d"}},
               {"r[1-2]c[1-2]", {"r1c1", "r1c2", "r2c1", "r2c2"}},
               {"pc.example.org", {"pc.example.org"}}};
  for (const auto& c : cases) {
    const HostList hosts = namesOf(c.list);
    EXPECT_EQ(hosts.names, c.names) << c.list;
    EXPECT_EQ(hosts.problem, "") << c.list;
  }
}

TEST(NamesOf, SaysWhatIsNoList) {
  const struct {
    const char* list;
    const char* problem;
  } cases[] = {{"", "a name is empty"},
               {"a,,b", "a name is empty"},
               {"c[1-3", "c[1-3 has a [ without a ]"},
               {"c1]", "c1] has a ] without a ["},
               {"c[3-1]", "[3-1] is no range of numbers"},
               {"c[]", "[] is no range of numbers"},
               {"c[a-b]", "[a-b] is no range of numbers"},
               {"c[1-]", "[1-] is no range of numbers"},
               {"c[0-4294967295]", "more than 100000 names"}};
  for (const auto& c : cases) {
    const HostList hosts = namesOf(c.list);
    EXPECT_EQ(hosts.problem, c.problem) << c.list;
    EXPECT_TRUE(hosts.names.empty()) << c.list;
    EXPECT_FALSE(hosts.isUnreadable) << c.list;
  }
}

TEST(NamesOf, TakesTheFirstNumbersWidthForTheLeast) {
  const Names names = namesOf("c[01-100]").names;
  ASSERT_EQ(names.size(), 100U);
  EXPECT_EQ(names.front(), "c01");
  EXPECT_EQ(names[98], "c99");
  EXPECT_EQ(names.back(), "c100");
}

TEST(NamesOf, TakesAHundredThousand) {
  EXPECT_EQ(namesOf("c[1-100000]").names.size(), 100'000U);
  EXPECT_EQ(namesOf("c[1-100001]").problem, "more than 100000 names");
}

TEST(ReadHostList, TakesNamesFromAFile) {
  const test::TempFolder folder;
  test::writeFile(folder.file("hosts"), "# the lab\r\nc1 c2\r\n\nc[03-04] # new\nlast");
  EXPECT_EQ(readHostList(folder.path() + "/hosts").names,
            (Names{"c1", "c2", "c03", "c04", "last"}));
}

TEST(ReadHostList, SaysWhyAFileGivesNone) {
  const test::TempFolder folder;
  const std::string empty = folder.path() + "/empty";
  const std::string odd = folder.path() + "/odd";
  test::writeFile(folder.file("empty"), "# nobody\n");
  test::writeFile(folder.file("odd"), "c1\nc[2-\n");
  EXPECT_EQ(readHostList(empty).problem, empty + ": no name stands in it");
  EXPECT_EQ(readHostList(odd).problem, odd + ": c[2- has a [ without a ]");
  EXPECT_TRUE(readHostList(odd).names.empty());
  EXPECT_FALSE(readHostList(odd).isUnreadable);
  EXPECT_TRUE(readHostList(folder.path()).isUnreadable);
  EXPECT_EQ(readHostList(folder.path()).problem, folder.path() + ": Is a directory");
}

TEST(ReadHostList, TakesAPathForAFile) {
  const test::TempFolder folder;
  const std::string missing = folder.path() + "/missing";
  EXPECT_TRUE(readHostList(missing).isUnreadable);
  EXPECT_EQ(readHostList(missing).problem, missing + ": No such file or directory");
}

TEST(ReadHostList, TakesAnythingElseForNames) {
  EXPECT_EQ(readHostList("c[1-2]").names, (Names{"c1", "c2"}));
}

}  // namespace
}  // namespace marrowbench::ctl
