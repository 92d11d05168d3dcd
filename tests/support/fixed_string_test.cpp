#include "support/fixed_string.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace marrowbench {
namespace {

// "abc...zabc...", so that a shifted or repeated piece shows.
std::string letters(std::size_t count) {
  std::string text;
  while (text.size() < count) text.push_back(static_cast<char>('a' + text.size() % 26));
  return text;
}

template <class Text>
std::string bytesOf(const Text& text) {
  return {reinterpret_cast<const char*>(&text), sizeof text};
}

template <class Text>
void expectCapacity(std::size_t capacity) {
  Text text(letters(capacity + 100));
  EXPECT_EQ(text.view(), letters(capacity));
  EXPECT_EQ(text.append('x').view(), letters(capacity)) << capacity;
}

TEST(FixedString, EveryMemberCutsAtItsCapacity) {
  expectCapacity<FixedString>(500);
  expectCapacity<TextBuffer>(5000);
  expectCapacity<ShortText>(250);
  expectCapacity<InterfaceName>(50);
  expectCapacity<TinyText>(10);
  EXPECT_EQ(LineString(std::u16string(1001, u'x')).view(), std::u16string(1000, u'x'));
  EXPECT_EQ(WideFixedString(std::u16string(251, u'x')).view(), std::u16string(250, u'x'));
}

TEST(FixedString, LengthStandsBeforeTheCharacters) {
  static_assert(sizeof(FixedString) == 504 && sizeof(LineString) == 2006);
  const std::uint16_t length = 300;
  const std::string stored(reinterpret_cast<const char*>(&length), 2);
  EXPECT_EQ(bytesOf(FixedString(letters(300))).substr(0, 302), stored + letters(300));

  const std::u16string wide(300, u'x');
  const std::string wideBytes(reinterpret_cast<const char*>(wide.data()), 600);
  EXPECT_EQ(bytesOf(LineString(wide)).substr(0, 604), stored + std::string(2, '\0') + wideBytes);
}

TEST(FixedString, EveryChangeLeavesAZeroTail) {
  const struct {
    const char* change;
    std::function<void(FixedString&)> apply;
    std::string left;
  } cases[] = {
      {"clear", [](auto& s) { s.clear(); }, ""},
      {"assign", [](auto& s) { s.assign("ab"); }, "ab"},
      {"copy", [](auto& s) { s = FixedString("xyz"); }, "xyz"},
      {"truncate", [](auto& s) { s.truncate(3); }, "abc"},
      {"erase", [](auto& s) { s.erase(1, 499); }, "at"},
      {"removeAllIgnoreCase", [](auto& s) { s.removeAllIgnoreCase(letters(497)); }, "def"},
      {"replaceAll", [](auto& s) { s.replaceAll(letters(497), "x"); }, "xdef"},
  };
  for (const auto& c : cases) {
    FixedString text(letters(497) + "def");
    if (std::string(c.change) == "erase") text.assign(letters(499) + "t");
    c.apply(text);
    EXPECT_EQ(bytesOf(text), bytesOf(FixedString(c.left))) << c.change;
    EXPECT_EQ(text.view(), c.left) << c.change;
  }
}

TEST(FixedString, IsEmptyOnlyWithoutCharacters) {
  EXPECT_TRUE(FixedString().isEmpty());
  EXPECT_FALSE(FixedString().isNotEmpty());
  EXPECT_FALSE(FixedString(" ").isEmpty());
  EXPECT_TRUE(FixedString(" ").isNotEmpty());
}

TEST(Assign, NullPointerClears) {
  const char* none = nullptr;
  FixedString text = "old";
  text.assign(none);
  EXPECT_EQ(bytesOf(text), bytesOf(FixedString()));
  EXPECT_TRUE(FixedString(none).isEmpty());
}

TEST(Assign, KeepsTakingTheLengthModulo65536BeforeTheLimit) {
  const struct {
    std::size_t given, kept, keptInLine;
  } cases[] = {{499, 499, 499}, {500, 500, 500},   {501, 500, 501},
               {600, 500, 600}, {1001, 500, 1000}, {65535, 500, 1000},
               {65536, 0, 0},   {65537, 1, 1},     {65536 + 600, 500, 600}};
  for (const auto& c : cases) {
    const std::string source = letters(c.given);
    EXPECT_EQ(FixedString(source.c_str()).view(), letters(c.kept)) << c.given;
    LineString line;
    line.assignBytes(source);
    EXPECT_EQ(line.length(), c.keptInLine) << c.given;
  }
}

TEST(Assign, TakesAPieceOfItself) {
  FixedString text = "one/two";
  text.assign(text.view().substr(4));
  EXPECT_EQ(bytesOf(text), bytesOf(FixedString("two")));
}

TEST(Append, AddsWhatStillFits) {
  FixedString text(letters(497));
  EXPECT_EQ(text.append("xyz!").view(), letters(497) + "xyz");
  EXPECT_EQ(text.append("more").append('!').append(FixedString("x")).view(), letters(497) + "xyz");
  EXPECT_EQ(FixedString("a").append('b').append(FixedString("cd")).append("e").view(), "abcde");
}

TEST(Truncate, MovesTheLengthIntoItsRange) {
  const struct {
    std::int32_t length;
    std::size_t kept;
  } cases[] = {{-1, 0},    {-2147483647, 0}, {0, 0},     {1, 1},           {3, 3},
               {499, 499}, {500, 500},       {501, 500}, {2147483647, 500}};
  for (const auto& c : cases) {
    FixedString text(letters(500));
    text.truncate(c.length);
    EXPECT_EQ(text.view(), letters(c.kept)) << c.length;
  }
}

TEST(Truncate, LengthBeyondTheTextKeepsTheZerosThere) {
  FixedString text = "ab";
  text.truncate(4);
  EXPECT_EQ(text.view(), std::string_view("ab\0\0", 4));
}

TEST(Erase, RemovesUpToNotIncludingTheEnd) {
  const struct {
    std::size_t from, to;
    const char* left;
  } cases[] = {{0, 1, "bcdef"}, {1, 3, "adef"},   {4, 6, "abcd"},   {4, 99, "abcd"},
               {0, 6, ""},      {3, 3, "abcdef"}, {3, 2, "abcdef"}, {6, 9, "abcdef"}};
  for (const auto& c : cases) {
    FixedString text = "abcdef";
    text.erase(c.from, c.to);
    EXPECT_EQ(text.view(), c.left) << c.from << " to " << c.to;
  }
}

TEST(EqualsIgnoreCase, ComparesAsciiLettersUpperCased) {
  const struct {
    const char* a;
    const char* b;
    bool equal;
  } cases[] = {{"MEMORY", "memory", true}, {"MEMORY", "MEMORY ", false}, {"", "", true},
               {"", "a", false},           {"az[", "AZ[", true},         {"[", "{", false},
               {"@", "`", false},          {"\xE4", "\xC4", false},      {"\xE4", "\xE4", true}};
  for (const auto& c : cases) {
    EXPECT_EQ(equalsIgnoreCase(FixedString(c.a), FixedString(c.b)), c.equal) << c.a << '|' << c.b;
    EXPECT_EQ(equalsIgnoreCase(FixedString(c.b), FixedString(c.a)), c.equal) << c.b << '|' << c.a;
  }
}

TEST(StartsAndEndsWithIgnoreCase, NeedAPatternThatIsNeitherEmptyNorTooLong) {
  const struct {
    std::string text, pattern;
    bool starts, ends;
  } cases[] = {{"Run.BST", "run", true, false},
               {"Run.BST", ".bst", false, true},
               {"Run.BST", "rUN.bst", true, true},
               {"Run.BST", "xRun.BST", false, false},
               {"Run.BST", "Run.BSTx", false, false},
               {"Run.BST", "", false, false},
               {"", "", false, false},
               {"", "a", false, false},
               {letters(500), letters(501), true, true},
               {letters(499), letters(501), false, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(startsWithIgnoreCase(FixedString(c.text), c.pattern), c.starts) << c.pattern;
    EXPECT_EQ(endsWithIgnoreCase(FixedString(c.text), c.pattern), c.ends) << c.pattern;
  }
  EXPECT_FALSE(startsWithIgnoreCase(FixedString("a"), {}));
  EXPECT_FALSE(endsWithIgnoreCase(FixedString("a"), {}));
}

TEST(FindIgnoreCase, FindsTheFirstAtOrAfterTheStart) {
  const struct {
    const char* pattern;
    std::size_t start;
    std::int32_t position;
  } cases[] = {{"ab", 0, 0}, {"AB", 1, 3}, {"aB", 3, 3},      {"ab", 4, -1}, {"b", 4, 4},
               {"d", 0, -1}, {"", 0, -1},  {"abcabd", 0, -1}, {"ab", 99, -1}};
  for (const auto& c : cases) {
    EXPECT_EQ(findIgnoreCase("abcAB", c.pattern, c.start), c.position) << c.pattern << c.start;
  }
}

TEST(FindLastChar, FindsTheLastNotAfterTheStart) {
  const struct {
    char c;
    std::size_t start;
    std::int32_t position;
  } cases[] = {{'/', static_cast<std::size_t>(-1), 5},
               {'/', 99, 5},
               {'/', 5, 5},
               {'/', 4, 1},
               {'/', 1, 1},
               {'/', 0, -1},
               {'A', 6, -1},
               {'c', 6, 6}};
  for (const auto& c : cases) {
    EXPECT_EQ(findLastChar("a/bcd/c", c.c, c.start), c.position) << c.c << c.start;
  }
  EXPECT_EQ(findLastChar("a/b", '/'), 1);
  EXPECT_EQ(findLastChar("", '/'), -1);
}

TEST(RemoveAllIgnoreCase, SearchesAgainFromTheStart) {
  const struct {
    const char* text;
    const char* pattern;
    const char* left;
  } cases[] = {{"aabb", "AB", ""}, {"xAByabz", "ab", "xyz"}, {"aaa", "aa", "a"},
               {"abc", "", "abc"}, {"abc", "d", "abc"},      {"aaabbb!", "ab", "!"},
               {"ab", "abc", "ab"}};
  for (const auto& c : cases) {
    FixedString text = c.text;
    text.removeAllIgnoreCase(c.pattern);
    EXPECT_EQ(text.view(), c.left) << c.text << " - " << c.pattern;
  }
}

TEST(ReplaceAll, GoesOnceFromTheLeftPastEachInsertion) {
  const struct {
    std::string text, pattern, replacement, result;
  } cases[] = {{"[Host]/[hOST]", "[host]", "b7", "b7/b7"},
               {"aaa", "a", "aa", "aaaaaa"},
               {"aaa", "aa", "a", "aa"},
               {"aabb", "ab", "", "ab"},
               {"abc", "", "x", "abc"},
               {"abc", "C", "", "ab"},
               {"abc", "d", "x", "abc"},
               {"", "a", "x", ""},
               {"ab" + letters(498), "ab", letters(600), letters(500)},
               {letters(499) + "!", "!", "xyz", letters(499) + "x"}};
  for (const auto& c : cases) {
    FixedString text(c.text);
    text.replaceAll(c.pattern, c.replacement);
    EXPECT_EQ(text.view(), c.result) << c.text << ": " << c.pattern << " by " << c.replacement;
  }
}

TEST(ReplaceCharIgnoreCase, TakesBothCasesOfTheCharacter) {
  FixedString text = "aAb\\B\\";
  text.replaceCharIgnoreCase('\\', '/');
  EXPECT_EQ(text.view(), "aAb/B/");
  text.replaceCharIgnoreCase('A', 'x');
  text.replaceCharIgnoreCase('b', 'Y');
  EXPECT_EQ(bytesOf(text), bytesOf(FixedString("xxY/Y/")));
}

}  // namespace
}  // namespace marrowbench
