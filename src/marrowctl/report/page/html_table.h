#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_HTML_TABLE_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_HTML_TABLE_H

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace marrowbench::ctl {

/// A table that stands ready in the page.
class HtmlTable {
 public:
  struct Column {
    std::string_view title;
    std::string_view unit = {};  ///< below the title; empty: none
    bool isText = false;         ///< to the left and with room to break
  };

  explicit HtmlTable(std::vector<Column> columns);

  /// @param cells  texts, as many as there are columns
  void add(std::initializer_list<std::string> cells);

  /// HTML, in a frame that scrolls where the page is narrow.
  [[nodiscard]] std::string html() const;

 private:
  std::vector<Column> heads;
  std::string rows;
};

}  // namespace marrowbench::ctl

#endif
