#include "marrowctl/table/row_dates.h"

#include <algorithm>
#include <ctime>
#include <limits>

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kDay = 86400;
constexpr int kYearZero = 1900;
// Two leap years can be eight years apart.
constexpr int kYearsBack = 8;
constexpr unsigned kHourShift = 12;
// Seconds: clients wait for the lock before they add a row, and clocks differ.
constexpr std::int64_t kOutOfOrder = 900;

std::int64_t beginOf(int year) {
  std::tm parts{};
  parts.tm_year = year - kYearZero;
  parts.tm_mday = 1;
  parts.tm_isdst = -1;
  return std::mktime(&parts);
}

// As summer time or not, or as it is (-1); nothing where there is no such hour.
std::optional<std::int64_t> beginOfHour(int year, const DateParts& date, int isSummer) {
  std::tm parts{};
  parts.tm_year = year - kYearZero;
  parts.tm_mon = date.month - 1;
  parts.tm_mday = date.day;
  parts.tm_hour = date.hour;
  parts.tm_isdst = isSummer;
  const std::int64_t time = std::mktime(&parts);
  // February 29 of other years.
  if (parts.tm_mday != date.day) return std::nullopt;
  const bool isMoved = parts.tm_hour != date.hour || parts.tm_min != 0;
  if (isMoved && isSummer >= 0) return std::nullopt;
  return time;
}

std::uint32_t stored(std::int64_t time) {
  return static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(time, 0, std::numeric_limits<std::uint32_t>::max()));
}

}  // namespace

std::int64_t YearFinder::timeOf(RowDate date) {
  const std::int64_t latest = behind + kDay;
  if (latest < newestFrom || latest >= newestTo) setNewestYear(latest);
  for (int year = newestYear; year >= newestYear - kYearsBack; --year) {
    const std::optional<std::int64_t> time = timeIn(year, date);
    if (time && *time <= latest) return behind = *time;
  }
  return behind;
}

std::optional<std::int64_t> YearFinder::timeIn(int year, RowDate date) {
  if (year != hourYear || date >> kHourShift != hour) {
    hourYear = year;
    hour = date >> kHourShift;
    findHour(year, partsOf(date));
  }
  if (!hourBegin) return std::nullopt;
  const DateParts parts = partsOf(date);
  const std::int64_t inHour = std::int64_t{parts.minute} * 60 + parts.second;
  const std::int64_t time = *hourBegin + inHour;
  return hourBefore && time > behind + kOutOfOrder ? *hourBefore + inHour : time;
}

void YearFinder::findHour(int year, const DateParts& date) {
  hourBegin = beginOfHour(year, date, 0);
  hourBefore = beginOfHour(year, date, 1);
  if (hourBegin && hourBefore) return;
  hourBegin = beginOfHour(year, date, -1);
  hourBefore.reset();
}

void YearFinder::setNewestYear(std::int64_t latest) {
  const auto seconds = static_cast<std::time_t>(latest);
  std::tm parts{};
  (void)localtime_r(&seconds, &parts);
  newestYear = parts.tm_year + kYearZero;
  newestFrom = beginOf(newestYear);
  newestTo = beginOf(newestYear + 1);
}

void setTimes(RowStore& store, std::uint64_t first, std::int64_t changed) {
  YearFinder years(changed);
  for (std::uint64_t i = store.size(); i-- > first;) {
    StoredRow& row = store.at(i);
    row.end = stored(years.timeOf(row.end));
  }
}

}  // namespace marrowbench::ctl
