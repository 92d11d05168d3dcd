#include "marrowctl/report/page/page.h"

#include <fmt/format.h>

#include <vector>

#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/report/page/page_assets.h"
#include "marrowctl/report/page/page_sections.h"
#include "marrowctl/support/html_text.h"
#include "marrowctl/support/json_writer.h"
#include "marrowctl/support/sha256.h"

namespace marrowbench::ctl {
namespace {

std::vector<ChartSection> sectionsOf(const Report& report) {
  return {timelineSection(report), throughputSection(report), interfaceSection(report),
          scalingSection(report),  throttlingSection(report), firstIterationSection(report),
          clientSection(report),   troubleSection(report)};
}

// Source of a content security policy: an element with just this text.
std::string sourceOf(std::string_view text) {
  const auto digest = sha256(text);
  return "'sha256-" + base64({reinterpret_cast<const char*>(digest.data()), digest.size()}) + "'";
}

std::string policyOf(const PageAssets& assets) {
  return fmt::format(
      "default-src 'none'; script-src {} {}; style-src {}; base-uri 'none'; form-action 'none'",
      sourceOf(assets.library), sourceOf(assets.script), sourceOf(assets.style));
}

std::string headHtml(const Report& report, const PageAssets& assets) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"{}\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<title>Marrowbench: {}</title>\n<style>{}</style>\n</head>\n<body>\n",
      policyOf(assets), htmlText(report.verdict.text), assets.style);
}

std::string navigationHtml(const std::vector<ChartSection>& sections) {
  std::string links = "<a href=\"#tests\">Tests</a>\n";
  for (const ChartSection& section : sections) {
    if (section.charts.empty()) continue;
    links += fmt::format("<a href=\"#{}\">{}</a>\n", section.id, htmlText(section.title));
  }
  return "<nav>\n" + links + "</nav>\n";
}

// Charts that a reader may look for and not find.
std::string absencesHtml(const std::vector<ChartSection>& sections) {
  std::string items;
  for (const ChartSection& section : sections) {
    if (!section.charts.empty() || section.id == "trouble") continue;
    items +=
        fmt::format("<li><b>{}</b>: {}</li>\n", htmlText(section.title), htmlText(section.absence));
  }
  if (items.empty()) return "";
  return "<section>\n<h2>Charts that these rows are not enough for</h2>\n<ul "
         "class=\"findings\">\n" +
         items + "</ul>\n</section>\n";
}

void appendChart(std::string& json, const Chart& chart) {
  std::string id;
  JsonWriter(id).value(chart.id);
  json += fmt::format("{}{{\"id\":{},\"spec\":{},\"table\":{}}}", json.back() == '[' ? "" : ",", id,
                      chart.spec, chart.table.json());
}

std::string chartsJson(const std::vector<ChartSection>& sections) {
  std::string json = fmt::format("{{\"config\":{},\"charts\":[", chartConfig());
  for (const ChartSection& section : sections) {
    for (const Chart& chart : section.charts) appendChart(json, chart);
  }
  return json + "]}";
}

std::string scriptsHtml(const PageAssets& assets, const std::vector<ChartSection>& sections) {
  return fmt::format(
      "<script type=\"application/json\" "
      "id=\"charts\">{}</script>\n<script>{}</script>\n<script>{}</script>\n",
      jsonInScript(chartsJson(sections)), assets.library, assets.script);
}

}  // namespace

bool canMakePages() { return !pageAssets().library.empty(); }

std::string pageOf(const Report& report, std::string_view program) {
  const PageAssets assets = pageAssets();
  const std::vector<ChartSection> sections = sectionsOf(report);
  std::string page = headHtml(report, assets) + verdictHtml(report) + navigationHtml(sections) +
                     doubtsHtml(report) + testsHtml(report) + stragglersHtml(report);
  page +=
      "<noscript><p class=\"note\">The charts need JavaScript, which is off here.</p></noscript>\n";
  for (const ChartSection& section : sections) page += chartsHtml(section);
  const std::string errors = errorsHtml(report);
  if (!errors.empty()) page += "<section>\n" + errors + "</section>\n";
  page +=
      absencesHtml(sections) + "<footer><p class=\"soft\">Made by " + htmlText(program) +
      ". The charts are drawn by Vega-Lite; its licences stand at the head of the script in this "
      "page.</p></footer>\n<div id=\"tip\" role=\"tooltip\"></div>\n";
  return page + scriptsHtml(assets, sections) + "</body>\n</html>\n";
}

}  // namespace marrowbench::ctl
