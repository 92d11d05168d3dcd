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

std::int64_t beginOf(int year) {
  std::tm parts{};
  parts.tm_year = year - kYearZero;
  parts.tm_mday = 1;
  parts.tm_isdst = -1;
  return std::mktime(&parts);
}

std::optional<std::int64_t> beginOfHour(int year, RowDate date) {
  const DateParts date_ = partsOf(date);
  std::tm parts{};
  parts.tm_year = year - kYearZero;
  parts.tm_mon = date_.month - 1;
  parts.tm_mday = date_.day;
  parts.tm_hour = date_.hour;
  parts.tm_isdst = -1;
  const std::int64_t time = std::mktime(&parts);
  // February 29 of other years.
  if (parts.tm_mday != date_.day) return std::nullopt;
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
    hourBegin = beginOfHour(year, date);
  }
  if (!hourBegin) return std::nullopt;
  const DateParts parts = partsOf(date);
  return *hourBegin + std::int64_t{parts.minute} * 60 + parts.second;
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
