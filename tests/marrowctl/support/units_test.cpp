#include "marrowctl/support/units.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl {
namespace {

TEST(BytesOf, TakesANumberAndAUnit) {
  const struct {
    const char* text;
    std::int64_t bytes;
  } cases[] = {{"0", 0},
               {"17", 17},
               {"17B", 17},
               {"4K", 4096},
               {"4k", 4096},
               {"64 KiB", 65536},
               {"1M", 1048576},
               {" 2mib ", 2097152},
               {"1G", 1073741824},
               {"1GiB", 1073741824},
               {"8589934591G", 8589934591 * 1073741824}};
  for (const auto& c : cases) EXPECT_EQ(bytesOf(c.text), c.bytes) << c.text;
  EXPECT_EQ(bytesOf("4", 1024), 4096);
  EXPECT_EQ(bytesOf("4M", 1024), 4194304);
}

TEST(BytesOf, RefusesEverythingElse) {
  for (const char* const text : {"", " ", "K", "-1", "-1K", "+1", "1.5M", "1MB", "1 M B", "1T",
                                 "4K4", "0x10", "8589934592G", "9223372036854775808"}) {
    EXPECT_EQ(bytesOf(text), std::nullopt) << text;
  }
}

TEST(SecondsOf, TakesANumberAndAUnit) {
  const struct {
    const char* text;
    std::int64_t seconds;
  } cases[] = {{"0", 0},     {"90", 90},    {"90s", 90},           {"15m", 900},
               {"2h", 7200}, {"1d", 86400}, {"36500d", 3153600000}};
  for (const auto& c : cases) EXPECT_EQ(secondsOf(c.text), c.seconds) << c.text;
}

TEST(SecondsOf, RefusesEverythingElse) {
  for (const char* const text : {"", "s", "-1", "+1", "1.5h", "1 h", "1h30m", "1M", "1min",
                                 "36501d", "9223372036854775807m", "9223372036854775808"}) {
    EXPECT_EQ(secondsOf(text), std::nullopt) << text;
  }
}

TEST(ShownSize, IsExactInTheLargestUnitThatIsShort) {
  const struct {
    std::int64_t bytes;
    const char* text;
  } cases[] = {{0, "0 bytes"},
               {1, "1 byte"},
               {1023, "1,023 bytes"},
               {1024, "1 KiB"},
               {1025, "1,025 bytes"},
               {1536, "1.5 KiB"},
               {1048576, "1 MiB"},
               {1049600, "1,025 KiB"},
               {1179648, "1.125 MiB"},
               {1073741824, "1 GiB"},
               {1073741825, "1,073,741,825 bytes"},
               {-5120, "-5 KiB"},
               {-1536, "-1.5 KiB"},
               {8388608000, "8,000 MiB"}};
  for (const auto& c : cases) {
    EXPECT_EQ(shownSize(c.bytes), c.text) << c.bytes;
  }
}

TEST(ShownCount, SetsThousandsApart) {
  EXPECT_EQ(shownCount(0), "0");
  EXPECT_EQ(shownCount(999), "999");
  EXPECT_EQ(shownCount(1000), "1,000");
  EXPECT_EQ(shownCount(-1234567), "-1,234,567");
  EXPECT_EQ(shownCount(1, "row"), "1 row");
  EXPECT_EQ(shownCount(2000, "row"), "2,000 rows");
}

TEST(ShownDuration, NamesHoursMinutesAndSeconds) {
  EXPECT_EQ(shownDuration(0), "0 s");
  EXPECT_EQ(shownDuration(59), "59 s");
  EXPECT_EQ(shownDuration(125), "2 min 5 s");
  EXPECT_EQ(shownDuration(3603), "1 h 0 min 3 s");
}

}  // namespace
}  // namespace marrowbench::ctl
