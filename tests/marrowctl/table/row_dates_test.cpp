#include "marrowctl/table/row_dates.h"

#include <gtest/gtest.h>

#include "helpers/environment_variable.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kYear2027 = 1798761600;  // January 1, 00:00 UTC

TEST(YearFinder, GoesBackOverNewYear) {
  const test::EnvironmentVariable zone("TZ", "UTC");
  YearFinder years(kYear2027 + 3600);
  EXPECT_EQ(years.timeOf(dateFrom("Jan 01. 00:30.00")), kYear2027 + 1800);
  EXPECT_EQ(years.timeOf(dateFrom("Dec 31. 23:30.00")), kYear2027 - 1800);
  EXPECT_EQ(years.timeOf(dateFrom("Jan 02. 00:00.00")), kYear2027 - 364 * kDay);
}

TEST(YearFinder, ClocksMayBeADayAheadOfTheRowBehind) {
  const test::EnvironmentVariable zone("TZ", "UTC");
  YearFinder years(kYear2027);
  EXPECT_EQ(years.timeOf(dateFrom("Jan 02. 00:00.00")), kYear2027 + kDay);
  YearFinder others(kYear2027);
  EXPECT_EQ(others.timeOf(dateFrom("Jan 02. 00:00.01")), kYear2027 - 364 * kDay + 1);
}

TEST(YearFinder, TellsTheHourThatComesTwiceByTheRowBehind) {
  const test::EnvironmentVariable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
  constexpr std::int64_t kSecondHour = 1792890000;  // October 25, 2026, 02:00 CET
  YearFinder years(kSecondHour + 3600);
  EXPECT_EQ(years.timeOf(dateFrom("Oct 25. 02:30.00")), kSecondHour + 1800);
  EXPECT_EQ(years.timeOf(dateFrom("Oct 25. 02:40.00")), kSecondHour + 2400) << "it waited";
  EXPECT_EQ(years.timeOf(dateFrom("Oct 25. 02:00.10")), kSecondHour + 10);
  EXPECT_EQ(years.timeOf(dateFrom("Oct 25. 02:50.00")), kSecondHour - 600);
  EXPECT_EQ(years.timeOf(dateFrom("Oct 25. 02:20.00")), kSecondHour - 2400);
  EXPECT_EQ(years.timeOf(dateFrom("Oct 25. 02:00.10")), kSecondHour - 3590);
  EXPECT_EQ(years.timeOf(dateFrom("Oct 25. 01:59.00")), kSecondHour - 3660);
}

TEST(YearFinder, TakesAnHourThatIsLeftOutAsItComes) {
  const test::EnvironmentVariable zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
  constexpr std::int64_t kThree = 1774746000;  // March 29, 2026, 03:00 CEST
  YearFinder years(kThree + 3600);
  EXPECT_EQ(years.timeOf(dateFrom("Mar 29. 03:00.10")), kThree + 10);
  EXPECT_EQ(years.timeOf(dateFrom("Mar 29. 01:59.50")), kThree - 10);
}

TEST(YearFinder, FebruaryTwentyNinthIsOfALeapYear) {
  const test::EnvironmentVariable zone("TZ", "UTC");
  YearFinder years(kYear2027);
  EXPECT_EQ(years.timeOf(dateFrom("Feb 29. 12:00.00")), 1709208000);  // 2024
}

}  // namespace
}  // namespace marrowbench::ctl
