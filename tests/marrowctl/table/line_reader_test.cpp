#include "marrowctl/table/line_reader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "marrowctl/table/byte_mask.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kBlock = LineReader::kBlock, kLongest = LineReader::kLongest;

struct ReadLine {
  std::string text;
  std::uint64_t number, begin;
  bool isEnded, isCut;
  bool operator==(const ReadLine&) const = default;
};

std::vector<ReadLine> linesOf(const std::string& content) {
  std::FILE* const file = std::tmpfile();
  std::fwrite(content.data(), 1, content.size(), file);
  std::rewind(file);
  LineReader reader(fileno(file));
  std::vector<ReadLine> lines;
  for (TextLine line; reader.next(line);) {
    lines.push_back({std::string(line.text), line.number, line.begin, line.isEnded, line.isCut});
  }
  EXPECT_EQ(reader.failure(), 0);
  EXPECT_EQ(reader.bytesRead(), content.size());
  (void)std::fclose(file);
  return lines;
}

TEST(EqualMask, HasABitForEachByteThatIsEqual) {
  std::mt19937 random(1);
  for (int round = 0; round < 1000; ++round) {
    char bytes[kMaskBytes];
    // Of few different bytes, 0 and 255 among them.
    for (char& byte : bytes) byte = static_cast<char>(random() % 3 - 1);
    for (const char wanted : {'\0', '\x01', '\xff', ','}) {
      std::uint64_t expected = 0;
      for (std::size_t i = 0; i < kMaskBytes; ++i) {
        expected |= std::uint64_t{bytes[i] == wanted} << i;
      }
      ASSERT_EQ(equalMask(bytes, wanted), expected);
      ASSERT_EQ(portableEqualMask(bytes, wanted), expected);
    }
  }
}

TEST(Separators, AreFoundUpToTheEndOfTheTextOnly) {
  // What stands behind the text must be readable, and does not count.
  const std::string line = ",a,,b" + std::string(60, 'x') + ",," + std::string(kMaskBytes, ',');
  const std::string_view text = std::string_view(line).substr(0, line.size() - kMaskBytes - 1);
  std::vector<std::uint32_t> positions(text.size());
  positions.resize(findSeparators(text, ',', positions.data()));
  EXPECT_EQ(positions, (std::vector<std::uint32_t>{0, 2, 3, 65}));
}

TEST(LineReader, GivesEachLine) {
  const std::vector<ReadLine> expected = {
      {"one", 1, 0, true, false}, {"", 2, 4, true, false}, {"three", 3, 5, false, false}};
  EXPECT_EQ(linesOf("one\n\nthree"), expected);
  EXPECT_EQ(linesOf(""), std::vector<ReadLine>());
  EXPECT_EQ(linesOf("\n").size(), 1U);
}

TEST(LineReader, PutsLinesTogetherThatLieInTwoBlocks) {
  for (const std::size_t begin : {kBlock - 3, kBlock - 1, kBlock, 2 * kBlock - 3}) {
    std::string content;
    while (content.size() + 100 < begin) content += std::string(99, 'x') + '\n';
    content += std::string(begin - content.size() - 1, 'y') + "\nthe line\nlast\n";
    const std::vector<ReadLine> lines = linesOf(content);
    ASSERT_GE(lines.size(), 2U);
    const ReadLine& line = lines[lines.size() - 2];
    EXPECT_EQ(line, (ReadLine{"the line", lines.size() - 1, begin, true, false}));
    EXPECT_EQ(lines.back().text, "last");
  }
}

TEST(LineReader, CutsALineThatIsTooLong) {
  for (const std::size_t length : {kLongest, kLongest + 1, kBlock + 5, 3 * kBlock}) {
    const std::vector<ReadLine> lines = linesOf("a\n" + std::string(length, 'x') + "\nb\n");
    ASSERT_EQ(lines.size(), 3U) << length;
    EXPECT_EQ(lines[1].text, std::string(kLongest, 'x'));
    EXPECT_EQ(lines[1].isCut, length > kLongest) << length;
    EXPECT_EQ(lines[2], (ReadLine{"b", 3, length + 3, true, false})) << length;
  }
}

}  // namespace
}  // namespace marrowbench::ctl
