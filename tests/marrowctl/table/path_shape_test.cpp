#include "marrowctl/table/path_shape.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl {
namespace {

TEST(PathShape, GivesEveryTextBack) {
  for (const char* text : {"", "abc", "7", "007", "/data_c01/file_12.bin", "0", "00", "1120_23210",
                           "123456789012345678901234567890",
                           "x9\xff"
                           "8"}) {
    std::string shape;
    std::vector<Digits> numbers;
    ASSERT_TRUE(appendShape(text, shape, numbers)) << text;
    EXPECT_EQ(shape.find_first_of("0123456789"), std::string::npos) << text;
    EXPECT_EQ(marksIn(shape), numbers.size()) << text;
    const Digits* next = numbers.data();
    EXPECT_EQ(filledShape(shape, next), text);
  }
}

TEST(PathShape, IsTheSameForPathsThatDifferInNumbers) {
  std::string one, other;
  std::vector<Digits> numbers;
  ASSERT_TRUE(appendShape("/c01/file_9.bin", one, numbers));
  ASSERT_TRUE(appendShape("/c0002/file_10.bin", other, numbers));
  EXPECT_EQ(one, other);
}

TEST(PathShape, RefusesATextWithTheMark) {
  std::string shape;
  std::vector<Digits> numbers;
  EXPECT_FALSE(
      appendShape("a\x01"
                  "b",
                  shape, numbers));
}

TEST(ShapeMatcher, FindsWhatAppendShapeWouldMake) {
  const std::vector<std::string> texts = {"",
                                          "7",
                                          "a",
                                          "a7",
                                          "7a",
                                          "/c01/file_9.bin",
                                          "/c01/file",
                                          "a77b8",
                                          "/c1/7_",
                                          "/c1/file_",
                                          "/c1/file_.b",
                                          std::string(19, '5'),
                                          "a\x01"
                                          "b"};
  for (const std::string& one : texts) {
    std::string shape;
    std::vector<Digits> numbers;
    if (!appendShape(one, shape, numbers)) continue;
    const ShapeMatcher matcher(shape);
    for (const std::string& other : texts) {
      std::string otherShape;
      std::vector<Digits> expected, taken;
      const bool isSame = appendShape(other, otherShape, expected) && otherShape == shape;
      ASSERT_EQ(matcher.matches(other, taken), isSame) << one << " and " << other;
      if (isSame) {
        EXPECT_EQ(taken, expected) << other;
      }
    }
  }
}

TEST(DigitsOfANumber, KeepTheirValueAndTheirZeros) {
  EXPECT_EQ(valueOf(1007), 7);
  EXPECT_EQ(textOf(1007), "007");
  EXPECT_TRUE(hasLeadingZero(1007));
  EXPECT_FALSE(hasLeadingZero(10));
  EXPECT_FALSE(hasLeadingZero(17));
  EXPECT_EQ(valueOf(10), 0);
}

TEST(Packed, NumbersComeBack) {
  std::vector<std::uint8_t> bytes;
  const std::uint64_t numbers[] = {0, 1, 127, 128, 16383, 16384, UINT64_MAX};
  for (const std::uint64_t number : numbers) appendPacked(number, bytes);
  const std::uint8_t* next = bytes.data();
  for (const std::uint64_t number : numbers) EXPECT_EQ(takePacked(next), number);
  EXPECT_EQ(next, bytes.data() + bytes.size());
}

}  // namespace
}  // namespace marrowbench::ctl
