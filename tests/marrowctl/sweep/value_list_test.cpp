#include "marrowctl/sweep/value_list.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl {
namespace {

using Numbers = std::vector<std::int64_t>;

TEST(ListSizes, TakesListsAndRangesInPowersOfTwo) {
  const struct {
    const char* text;
    Numbers bytes;
  } cases[] = {{"4K", {4096}},
               {"4K,64K,1M", {4096, 65536, 1048576}},
               {" 4K , 1M ", {4096, 1048576}},
               {"4K..32K", {4096, 8192, 16384, 32768}},
               {"4K .. 8K", {4096, 8192}},
               {"4K..4K", {4096}},
               {"3K..20K", {3072, 6144, 12288}},
               {"0,1K..2K,1M", {0, 1024, 2048, 1048576}},
               {"8K,4K..16K", {8192, 4096, 16384}}};
  for (const auto& c : cases) {
    const auto list = listSizes(c.text);
    EXPECT_EQ(list.reason, "") << c.text;
    EXPECT_EQ(list.values, c.bytes) << c.text;
  }
}

TEST(ListSizes, SaysWhatItDoesNotTake) {
  const struct {
    const char* text;
    const char* reason;
  } cases[] = {{"", "empty"},
               {"4K,", "empty"},
               {",4K", "empty"},
               {"4096", "\"4096\""},
               {"4K,soon", "\"soon\""},
               {"4K..", "no range"},
               {"..4K", "no range"},
               {"4K..8K..16K", "no range"},
               {"4K..soon", "no range"},
               {"0..4K", "doubles"},
               {"8K..4K", "backwards"}};
  for (const auto& c : cases) {
    const auto list = listSizes(c.text);
    EXPECT_NE(list.reason.find(c.reason), std::string::npos) << c.text << ": " << list.reason;
    EXPECT_TRUE(list.values.empty()) << c.text;
  }
}

TEST(ListSizes, EndsAtTheLargestNumber) {
  EXPECT_EQ(listSizes("4611686018427387904B..9223372036854775807B").values,
            Numbers{4611686018427387904});
}

TEST(ListNumbers, TakesSignsAndRanges) {
  EXPECT_EQ(listNumbers("-1,0,1").values, (Numbers{-1, 0, 1}));
  EXPECT_EQ(listNumbers("1..8,3").values, (Numbers{1, 2, 4, 8, 3}));
  for (const char* text : {"4K", "--1", "-", "1.5", "-4..4", "0..4"}) {
    EXPECT_NE(listNumbers(text).reason, "") << text;
  }
}

TEST(ListWords, TakesWordsInAnyCaseOnce) {
  constexpr std::string_view kWords[] = {"posix", "ansic", "stream"};
  EXPECT_EQ(listWords("Stream,POSIX,stream", kWords).values, (std::vector<std::size_t>{2, 0}));
}

TEST(ListWords, SaysWhichWordWasMeant) {
  constexpr std::string_view kWords[] = {"posix", "ansic", "stream"};
  EXPECT_EQ(listWords("posix,steam", kWords).reason,
            "\"steam\" is none of posix, ansic, stream; did you mean stream?");
  EXPECT_EQ(listWords("winapi", kWords).reason, "\"winapi\" is none of posix, ansic, stream");
}

TEST(ListTexts, TakesThemAsTheyStand) {
  EXPECT_EQ(listTexts("/a/B c/,x..y").values, (std::vector<std::string>{"/a/B c/", "x..y"}));
  EXPECT_NE(listTexts("a,,b").reason, "");
}

}  // namespace
}  // namespace marrowbench::ctl
