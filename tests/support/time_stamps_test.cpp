#include "support/time_stamps.h"

#include <gtest/gtest.h>

#include "helpers/environment_variable.h"

namespace marrowbench {
namespace {

constexpr std::int64_t kMarch = 1'709'646'458;     // 5 March 2024, 13:47:38 UTC
constexpr std::int64_t kNovember = 1'700'522'465;  // 20 November 2023, 23:21:05 UTC

TEST(ShortStamp, ShowsMonthDayAndTime) {
  EXPECT_EQ(shortStamp(kNovember).view(), "11.20. 23:21.05");
  EXPECT_EQ(shortStamp(kMarch).view(), "03.05. 13:47.38");
}

TEST(ShortStamp, KnowsNoSpecialTimes) {
  EXPECT_EQ(shortStamp(0).view(), "01.01. 00:00.00");
  EXPECT_EQ(shortStamp(-1).view(), "12.31. 23:59.59");
}

TEST(DateText, ShowsTheMonthsName) {
  constexpr const char* kNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (int month = 0; month < 12; ++month) {
    std::tm at{};
    at.tm_year = 123;
    at.tm_mon = month;
    at.tm_mday = 9;
    at.tm_hour = 8;
    at.tm_sec = 7;
    const FixedString expected = FixedString(kNames[month]).append(" 09. 08:00.07");
    EXPECT_EQ(dateText(std::mktime(&at)).view(), expected.view()) << month;
  }
}

TEST(DateText, TimesThatAreNotKnownAreDashes) {
  EXPECT_EQ(dateText(0).view(), "-.-");
  EXPECT_EQ(dateText(-1).view(), "--.-");
  EXPECT_EQ(dateText(-5).view(), "--.-");
  EXPECT_EQ(dateText(1).view(), "Jan 01. 00:00.01");
}

TEST(FileStamp, EndsInTheTensOfTheSecond) {
  EXPECT_EQ(fileStamp(kMarch).view(), "0305_13473");
  EXPECT_EQ(fileStamp(kNovember).view(), "1120_23210");
}

TEST(FileStamp, TimeZeroIsAllZeros) {
  EXPECT_EQ(fileStamp(0).view(), "000000_000");
  EXPECT_EQ(fileStamp(1).view(), "0101_00000");
  EXPECT_EQ(fileStamp(-1).view(), "1231_23595");
}

TEST(TimeStamps, AreInLocalTime) {
  const test::EnvironmentVariable zone("TZ", "TST-3:30");
  EXPECT_EQ(shortStamp(kNovember).view(), "11.21. 02:51.05");
  EXPECT_EQ(dateText(kNovember).view(), "Nov 21. 02:51.05");
  EXPECT_EQ(fileStamp(kNovember).view(), "1121_02510");
}

}  // namespace
}  // namespace marrowbench
