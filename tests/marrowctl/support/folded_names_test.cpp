#include "marrowctl/support/folded_names.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "marrowctl/support/host_list.h"

namespace marrowbench::ctl {
namespace {

using Names = std::vector<std::string>;

TEST(FoldedNames, PutsNeighboursThatCountUpInBrackets) {
  const struct {
    Names names;
    const char* list;
  } cases[] = {{{}, ""},
               {{"c1"}, "c1"},
               {{"c1", "c02", "c03", "c04"}, "c1,c[02-04]"},
               {{"c8", "c9", "c10", "c11"}, "c[8-11]"},
               {{"c08", "c09", "c10"}, "c[08-10]"},
               {{"c1.lan", "c2.lan", "d.lan"}, "c[1-2].lan,d.lan"},
               {{"r1c1", "r1c2", "r2c1", "r2c2"}, "r1c[1-2],r2c[1-2]"},
               {{"r1c1", "r2c1", "r3c1"}, "r[1-3]c1"},
               {{"c2", "c1"}, "c2,c1"},
               {{"c1", "c3"}, "c1,c3"},
               {{"1", "2"}, "[1-2]"},
               {{"a", "a"}, "a,a"}};
  for (const auto& c : cases) EXPECT_EQ(foldedNames(c.names), c.list);
}

TEST(FoldedNames, KeepsWhatReadersTakeInDifferentWays) {
  // [09-100] would lose its width, [999999999-...] its reader's integer.
  EXPECT_EQ(foldedNames(Names{"c098", "c099", "c100"}), "c[098-100]");
  EXPECT_EQ(foldedNames(Names{"c99", "c100"}), "c[99-100]");
  // ClusterShell refuses [09-100] where its numbers pass from two digits to three.
  EXPECT_EQ(foldedNames(namesOf("c[09-99],c100,c101").names), "c[09-99],c[100-101]");
  EXPECT_EQ(foldedNames(namesOf("c[01-100]").names), "c[01-99],c100");
  EXPECT_EQ(foldedNames(namesOf("c[01-100].lan").names, Folding::anywhere),
            "c[01-99].lan,c100.lan");
  EXPECT_EQ(foldedNames(Names{"c09", "c10", "c11"}), "c[09-11]");
  EXPECT_EQ(foldedNames(Names{"c0", "c1"}), "c[0-1]");
  EXPECT_EQ(foldedNames(Names{"c099", "c100", "c0101"}), "c[099-100],c0101");
  EXPECT_EQ(foldedNames(Names{"c999999999", "c1000000000"}), "c999999999,c1000000000");
  EXPECT_EQ(foldedNames(Names{"c1234567890", "c1234567891"}), "c1234567890,c1234567891");
}

TEST(FoldedNames, HasRangesAtTheEndOnlyWhereThatIsAsked) {
  const Names names = {"c1.lan", "c2.lan", "n1", "n2"};
  EXPECT_EQ(foldedNames(names, Folding::atTheEnd), "c1.lan,c2.lan,n[1-2]");
}

TEST(FoldedNames, AreReadAsTheNamesThatWereFolded) {
  std::mt19937 random(14);
  const auto pick = [&random](unsigned most) { return static_cast<unsigned>(random()) % most; };
  for (int round = 0; round < 400; ++round) {
    Names names;
    for (unsigned count = 1 + pick(12); count > 0; --count) {
      std::string number = std::to_string(pick(2) == 0 ? pick(13) : 95 + pick(10));
      if (pick(3) == 0) number.insert(0, pick(3), '0');
      names.push_back((pick(4) == 0 ? "a1b" : "c") + number + (pick(3) == 0 ? ".lan2" : ""));
      if (pick(2) == 0) names.push_back("c" + std::to_string(names.size()));
    }
    for (const Folding folding : {Folding::anywhere, Folding::atTheEnd}) {
      const std::string list = foldedNames(names, folding);
      EXPECT_EQ(namesOf(list).names, names) << list;
    }
  }
}

}  // namespace
}  // namespace marrowbench::ctl
