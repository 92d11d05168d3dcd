#include "settings/raw_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

namespace marrowbench {
namespace {

std::vector<std::string> linesOf(const std::string& content) {
  std::istringstream file(content);
  std::vector<std::string> lines;
  for (RawLine line; readRawLine(file, line);) lines.push_back(line.text);
  return lines;
}

TEST(ReadRawLine, EndsAtLineFeeds) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(linesOf(""), Lines{});
  EXPECT_EQ(linesOf("\n"), Lines{""});
  EXPECT_EQ(linesOf("a\n\nb\r\n"), (Lines{"a", "", "b\r"}));
  EXPECT_EQ(linesOf("a\nlast"), (Lines{"a", "last"}));
  EXPECT_EQ(linesOf(std::string("a\0b\n", 4)), Lines{std::string("a\0b", 3)});
}

TEST(ReadRawLine, KeepsAMebibyteAndCountsTheRest) {
  for (const std::size_t length : {1048575U, 1048576U, 1048577U, 3000000U}) {
    std::istringstream file(std::string(length, 'x') + "\nnext");
    RawLine line;
    ASSERT_TRUE(readRawLine(file, line));
    EXPECT_EQ(line.length, length);
    EXPECT_EQ(line.text.size(), std::min<std::size_t>(length, 1048576)) << length;
    ASSERT_TRUE(readRawLine(file, line));
    EXPECT_EQ(line.text, "next");
    EXPECT_EQ(line.length, 4U);
  }
}

// A file that fails after some bytes, as on a share whose server ends.
class FailingFile : public std::streambuf {
  int_type underflow() override {
    if (gptr() != nullptr) throw std::runtime_error("input/output error");
    setg(bytes, bytes, bytes + sizeof bytes);
    return traits_type::to_int_type(bytes[0]);
  }
  char bytes[6] = {'a', '\n', 'h', 'a', 'l', 'f'};
};

TEST(ReadRawLine, DropsALineThatCantBeReadToItsEnd) {
  FailingFile failing;
  std::istream file(&failing);
  RawLine line;
  ASSERT_TRUE(readRawLine(file, line));
  EXPECT_EQ(line.text, "a");
  EXPECT_FALSE(readRawLine(file, line));
}

TEST(CharactersOf, KeepsCountingTheLengthModulo65536) {
  const struct {
    std::uint64_t length;
    std::size_t characters;
  } cases[] = {{0, 0},           {999, 999},      {1000, 1000},         {1001, 1000},
               {65535, 1000},    {65536, 0},      {65540, 4},           {1048576, 0},
               {1048576 + 7, 7}, {3ULL << 32, 0}, {(3ULL << 32) + 5, 5}};
  for (const auto& c : cases) {
    RawLine line{std::string(std::min<std::uint64_t>(c.length, 1048576), 'x'), c.length};
    EXPECT_EQ(charactersOf(line).length(), c.characters) << c.length;
  }
}

TEST(CharactersOf, WidensBytesWithTheirSign) {
  EXPECT_EQ(charactersOf({"a\xE4", 2}).view(), u"a\uFFE4");
}

}  // namespace
}  // namespace marrowbench
