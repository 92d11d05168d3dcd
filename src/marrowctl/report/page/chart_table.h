#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_CHART_TABLE_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_CHART_TABLE_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace marrowbench::ctl {

enum class ColumnKind { text, number, time };

/// The rows that a chart is drawn from, and that the page shows as its table.
class ChartTable {
 public:
  struct Column {
    std::string name;   ///< as the chart's drawing calls it
    std::string title;  ///< for people, with the unit
    ColumnKind kind = ColumnKind::text;
  };

  /// What stands in one cell. Texts are bytes.
  class Cell {
   public:
    Cell() = default;  ///< unknown
    Cell(double value) : number(value), isSet(true) {}
    Cell(std::string_view value) : text(value), isSet(true) {}
    Cell(const std::string& value) : text(value), isSet(true) {}

   private:
    friend class ChartTable;
    std::string_view text;
    double number = 0;
    bool isSet = false;
  };

  explicit ChartTable(std::vector<Column> heads);

  /// Times are in seconds since the epoch. What is no finite number is unknown.
  /// @pre as many cells as there are columns, each of its column's kind
  void add(std::initializer_list<Cell> cells);

  [[nodiscard]] std::size_t rows() const { return rowCount; }

  /// JSON: a list of columns with name, title, kind and values; a text is the number of its place
  /// in the column's "texts". Six digits of a number are kept, milliseconds of a time, which is
  /// shifted so that it reads as the local one when it is taken for UTC.
  [[nodiscard]] std::string json() const;

 private:
  struct Values {
    Column head;
    std::string json;  // values and the commas between them
    std::vector<std::string> texts;
    std::map<std::string, std::size_t, std::less<>> places;  // of the texts
  };
  static std::string valueOf(Values& column, const Cell& cell);

  std::vector<Values> columns;
  std::size_t rowCount = 0;
};

}  // namespace marrowbench::ctl

#endif
