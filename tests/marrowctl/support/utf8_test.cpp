#include "marrowctl/support/utf8.h"

#include <gtest/gtest.h>

#include "marrowctl/support/terminal.h"

namespace marrowbench::ctl {
namespace {

#define REPLACED "\xEF\xBF\xBD"

TEST(RepairedUtf8, ReplacesBytesOfNoCharacter) {
  const struct {
    std::string text, repaired;
  } cases[] = {{"", ""},
               {"abc", "abc"},
               {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
               {"a\xE4"
                "b",
                "a" REPLACED "b"},
               {"\xC3", REPLACED},
               {"\xE2\x82", REPLACED REPLACED},
               {"\xC0\xAF", REPLACED REPLACED},               // overlong
               {"\xE0\x80\xAF", REPLACED REPLACED REPLACED},  // overlong
               {"\xED\xA0\x80", REPLACED REPLACED REPLACED},  // a surrogate
               {"\xF4\x90\x80\x80", REPLACED REPLACED REPLACED REPLACED},
               {"\xF5\xFF", REPLACED REPLACED}};
  for (const auto& c : cases) EXPECT_EQ(repairedUtf8(c.text), c.repaired);
}

TEST(Printable, HoldsNoControlCharacter) {
  EXPECT_EQ(printable("a\tb\033[1mc\x7F"), "a b" REPLACED "[1mc" REPLACED);
  EXPECT_EQ(printable("\xC2\x9B\xC2\xA0"), REPLACED "\xC2\xA0");
  EXPECT_EQ(printable(std::string_view("\0x", 2)), REPLACED "x");
}

TEST(ColumnsOf, CountsCharacters) { EXPECT_EQ(columnsOf("a\xC3\xA4\xE2\x82\xAC"), 3U); }

TEST(Wrapped, BreaksAtBlanks) {
  EXPECT_EQ(wrapped("", 2, 10), "");
  EXPECT_EQ(wrapped("aaa bbb ccc", 2, 9), "  aaa bbb\n  ccc\n");
  EXPECT_EQ(wrapped("aaaaaaaaaaaa b", 2, 8), "  aaaaaaaaaaaa\n  b\n");
}

TEST(Toned, IsPlainWithoutColour) {
  EXPECT_EQ(toned("x", Tone::red, {false, 80}), "x");
  EXPECT_EQ(toned("x", Tone::red, {true, 80}), "\033[1;31mx\033[0m");
}

}  // namespace
}  // namespace marrowbench::ctl
