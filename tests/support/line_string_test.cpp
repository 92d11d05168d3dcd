#include "support/line_string.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace marrowbench {
namespace {

LineString lineOf(std::string_view bytes) {
  LineString line;
  line.assignBytes(bytes);
  return line;
}

// Low bytes only, so that failures are readable.
std::string shown(const LineString& line) { return std::string(narrowedText<1000>(line)); }

TEST(AssignBytes, ExtendsTheSignOfEveryByte) {
  const LineString line = lineOf("a\x7F\x80\xE4\xFF");
  EXPECT_EQ(line.view(), (std::u16string{u'a', 0x7F, 0xFF80, 0xFFE4, 0xFFFF}));
}

TEST(AssignBytes, NulIsAnOrdinaryCharacter) {
  EXPECT_EQ(lineOf({"a\0b", 3}).view(), std::u16string_view(u"a\0b", 3));
}

TEST(StartsWithChar, ComparesExactly) {
  EXPECT_TRUE(startsWithChar(lineOf("# x"), u'#'));
  EXPECT_FALSE(startsWithChar(lineOf(" #"), u'#'));
  EXPECT_FALSE(startsWithChar(lineOf("a"), u'A'));
  EXPECT_FALSE(startsWithChar(LineString(), u'\0'));
}

TEST(LineEndsWithIgnoreCase, UpperCasesAsciiOnBothSides) {
  const struct {
    std::string line, pattern;
    bool ends;
  } cases[] = {{"next.BST", ".bst", true},
               {"next.bst", ".BST", true},
               {"next.bst ", ".bst", false},
               {".bst", ".bst", true},
               {"bst", ".bst", false},
               {"", ".bst", false},
               {"", "", false},
               {"a\xE4", "\xE4", true},
               {"a\xE4", "\xC4", false},
               {std::string(1000, 'x'), std::string(1001, 'X'), true},
               {std::string(999, 'x'), std::string(1001, 'x'), false}};
  for (const auto& c : cases) {
    EXPECT_EQ(endsWithIgnoreCase(lineOf(c.line), c.pattern), c.ends) << c.line << '|' << c.pattern;
  }
}

TEST(LineEqualsIgnoreCase, NeedsEqualLengths) {
  const struct {
    const char* line;
    const char* text;
    bool equal;
  } cases[] = {{"True", "tRUE", true}, {"true ", "true", false}, {"tru", "true", false},
               {"", "", true},         {"", "a", false},         {"\xE4", "\xE4", true},
               {"\xE4", "\xC4", false}};
  for (const auto& c : cases) {
    EXPECT_EQ(equalsIgnoreCase(lineOf(c.line), c.text), c.equal) << c.line << '|' << c.text;
    EXPECT_EQ(equalsIgnoreCase(lineOf(c.line).view(), lineOf(c.text).view()), c.equal) << c.line;
  }
  EXPECT_FALSE(equalsIgnoreCase(std::u16string_view(u"\u0161"), std::u16string_view(u"a")));
}

TEST(Trim, RemovesFiveCharactersAndNothingElse) {
  const struct {
    std::string_view line, left;
  } cases[] = {{" \t a b\r\n", "a b"},
               {{"\0a\0b\0\0", 6}, {"a\0b", 3}},
               {" \t \t", ""},
               {"", ""},
               {"a", "a"},
               {"\xA0 a \xA0", "\xA0 a \xA0"},
               {"\f a \v", "\f a \v"},
               {"  \x1F", "\x1F"}};
  for (const auto& c : cases) {
    LineString line = lineOf(c.line);
    trim(line);
    EXPECT_EQ(line, lineOf(c.left)) << c.line;
  }
  LineString wide(u"\u0120 a\u0120");  // the low byte alone is a blank
  trim(wide);
  EXPECT_EQ(wide.length(), 4U);
}

struct FieldCase {
  std::string line, field, left;
};

void expectFields(bool keepSeparator, const std::vector<FieldCase>& cases) {
  for (const auto& c : cases) {
    LineString line = lineOf(c.line);
    const LineString field = takeField(line, u';', keepSeparator);
    EXPECT_EQ(shown(field), c.field) << c.line;
    EXPECT_EQ(shown(line), c.left) << c.line;
  }
}

TEST(TakeField, TakesTheCharactersBeforeTheSeparator) {
  expectFields(false, {{"a;b", "a", "b"},
                       {"ab;c;d", "ab", "c;d"},
                       {"abc", "abc", ""},
                       {"a;", "a", ""},
                       {"", "", ""},
                       {std::string(999, 'x') + ";", std::string(999, 'x'), ""}});
}

TEST(TakeField, KeepsReadingALeadingSeparatorAsItself) {
  expectFields(false, {{";;x", ";", ";x"}, {";", ";", ""}, {";a;b", ";", "a;b"}});
}

TEST(TakeField, KeepsTheSeparatorWhenAskedSaveALeadingOne) {
  expectFields(true, {{"a;b", "a;", "b"},
                      {"a;", "a;", ""},
                      {"abc", "abc", ""},
                      {"", "", ""},
                      {";x", "", "x"},
                      {";;x", "", ";x"}});
}

TEST(TakeField, ComparesTheSeparatorIgnoringCase) {
  LineString line = lineOf("1x2X3");
  EXPECT_EQ(shown(takeField(line, u'X', false)), "1");
  EXPECT_EQ(shown(takeField(line, u'x', false)), "2");
  EXPECT_EQ(shown(line), "3");
}

TEST(NarrowedText, TakesLowBytesUpToTheLimit) {
  EXPECT_EQ(narrowedText<500>(u"a\u0141\uFFE4\u0100z").view(), std::string_view("aA\xE4\0z", 5));
  const std::u16string longText(1000, u'x');
  EXPECT_EQ(narrowedText<500>(longText).length(), 500U);
  EXPECT_EQ(narrowedText<499>(longText).length(), 499U);
  EXPECT_EQ(narrowedText<249>(longText.substr(0, 249)).length(), 249U);
  EXPECT_EQ(narrowedText<249>(longText.substr(0, 250)).length(), 249U);
}

}  // namespace
}  // namespace marrowbench
