#include "marrowctl/report/page/html_table.h"

#include <fmt/format.h>

#include "marrowctl/support/html_text.h"

namespace marrowbench::ctl {

HtmlTable::HtmlTable(std::vector<Column> columns) : heads(std::move(columns)) {}

void HtmlTable::add(std::initializer_list<std::string> cells) {
  rows += "<tr>";
  auto head = heads.begin();
  for (const std::string& cell : cells) {
    rows += (head++)->isText ? "<td class=\"wide\">" : "<td class=\"number\">";
    rows += htmlText(cell) + "</td>";
  }
  rows += "</tr>\n";
}

std::string HtmlTable::html() const {
  std::string text = "<div class=\"scroll\"><table><thead><tr>";
  for (const Column& head : heads) {
    text += head.isText ? "<th>" : "<th class=\"number\">";
    text += htmlText(head.title);
    if (!head.unit.empty()) text += "<small>" + htmlText(head.unit) + "</small>";
    text += "</th>";
  }
  return text + "</tr></thead><tbody>\n" + rows + "</tbody></table></div>\n";
}

}  // namespace marrowbench::ctl
