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

TEST(YearFinder, FebruaryTwentyNinthIsOfALeapYear) {
  const test::EnvironmentVariable zone("TZ", "UTC");
  YearFinder years(kYear2027);
  EXPECT_EQ(years.timeOf(dateFrom("Feb 29. 12:00.00")), 1709208000);  // 2024
}

}  // namespace
}  // namespace marrowbench::ctl
