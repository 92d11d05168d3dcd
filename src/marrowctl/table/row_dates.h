#ifndef MARROWBENCH_MARROWCTL_TABLE_ROW_DATES_H
#define MARROWBENCH_MARROWCTL_TABLE_ROW_DATES_H

#include <cstdint>
#include <optional>

#include "marrowctl/table/row_cells.h"
#include "marrowctl/table/row_store.h"

namespace marrowbench::ctl {

/// Gives dates their years, from the last row of a file to its first: each row is of the newest
/// year in which it is not more than a day later than the row behind it, so that New Year, clocks
/// that are a little ahead and rows that waited for the lock all work. Of the hour that comes twice
/// where summer time ends, it is the first one if the second would be later than the row behind.
class YearFinder {
 public:
  /// @param changed  when the file was changed last, seconds since the epoch
  explicit YearFinder(std::int64_t changed) : behind(changed) {}

  /// Seconds since the epoch of the row in front of the one asked for last.
  [[nodiscard]] std::int64_t timeOf(RowDate date);

 private:
  [[nodiscard]] std::optional<std::int64_t> timeIn(int year, RowDate date);
  void findHour(int year, const DateParts& date);
  void setNewestYear(std::int64_t latest);

  std::int64_t behind;
  int newestYear = 0;                          // of a row that is not too late
  std::int64_t newestFrom = 0, newestTo = -1;  // seconds from which and to which it is that
  int hourYear = 0;  // the hour whose beginning is known: asking the system takes long
  RowDate hour = 0;
  std::optional<std::int64_t> hourBegin;
  std::optional<std::int64_t> hourBefore;  // the same an hour earlier, where it comes twice
};

/// Turns the dates of the rows from `first` to the last one into seconds.
void setTimes(RowStore& store, std::uint64_t first, std::int64_t changed);

}  // namespace marrowbench::ctl

#endif
