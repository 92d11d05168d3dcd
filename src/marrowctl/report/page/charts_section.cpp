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

std::string_view classOf(Layout layout) {
  switch (layout) {
    case Layout::row: return "row";
    case Layout::grid: return "grid";
    case Layout::small: return "grid small";
  }
  return "";
}

std::string sectionHtml(const ChartSection& section) {
  if (section.charts.empty()) return "";
  std::string figures;
  for (const Chart& chart : section.charts) figures += figureHtml(chart);
  return fmt::format(
      "<section id=\"{}\">\n<h2>{}</h2>\n<p class=\"legend\">{}</p>\n<div class=\"{}\">\n{}</div>\n"
      "</section>\n",
      section.id, htmlText(section.title), htmlText(section.legend), classOf(section.layout),
      figures);
}

}  // namespace

std::string linkHtml(std::string_view id, std::string_view title) {
  return fmt::format("<a href=\"#{}\">{}</a>\n", id, htmlText(title));
}

std::string linksHtml(const std::vector<ChartSection>& sections) {
  std::string links;
  for (const ChartSection& section : sections) {
    if (!section.charts.empty()) links += linkHtml(section.id, section.title);
  }
  return links;
}

std::string chartsHtml(const std::vector<ChartSection>& sections) {
  std::string html =
      "<noscript><p class=\"note\">The charts need JavaScript, which is off here.</p></noscript>\n";
  for (const ChartSection& section : sections) html += sectionHtml(section);
  return html;
}

std::string absencesHtml(const std::vector<ChartSection>& sections) {
  std::string items;
  for (const ChartSection& section : sections) {
    if (!section.charts.empty() || section.absence.empty()) continue;
    items +=
        fmt::format("<li><b>{}</b>: {}</li>\n", htmlText(section.title), htmlText(section.absence));
  }
  if (items.empty()) return "";
  return "<section>\n<h2>Charts that these rows are not enough for</h2>\n<ul "
         "class=\"findings\">\n" +
         items + "</ul>\n</section>\n";
}

}  // namespace marrowbench::ctl
