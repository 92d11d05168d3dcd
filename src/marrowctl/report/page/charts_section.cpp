#include <fmt/format.h>

#include "marrowctl/report/page/page_sections.h"
#include "marrowctl/support/html_text.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

std::string figureHtml(const Chart& chart) {
  const std::string title = htmlText(chart.title);
  return fmt::format(
      "<figure id=\"{}\">\n<h3>{}</h3>\n<div class=\"chart\" role=\"img\" "
      "aria-label=\"{}\"></div>\n{}"
      "<details><summary>Table: {}</summary></details>\n</figure>\n",
      chart.id, title, title,
      chart.note.empty() ? "" : "<p class=\"note\">" + htmlText(chart.note) + "</p>\n",
      shownCount(static_cast<std::int64_t>(chart.table.rows()), "row"));
}

}  // namespace

std::string chartsHtml(const ChartSection& section) {
  if (section.charts.empty()) return "";
  std::string figures;
  for (const Chart& chart : section.charts) figures += figureHtml(chart);
  return fmt::format(
      "<section id=\"{}\">\n<h2>{}</h2>\n<p class=\"legend\">{}</p>\n<div class=\"{}\">\n{}</div>\n"
      "</section>\n",
      section.id, htmlText(section.title), htmlText(section.legend),
      section.isGrid ? "grid" : "row", figures);
}

}  // namespace marrowbench::ctl
