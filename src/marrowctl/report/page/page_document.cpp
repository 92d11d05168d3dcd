#include "marrowctl/report/page/page_document.h"

#include <fmt/format.h>

#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/report/page/page_assets.h"
#include "marrowctl/support/html_text.h"
#include "marrowctl/support/json_writer.h"
#include "marrowctl/support/sha256.h"

namespace marrowbench::ctl {
namespace {

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

std::string headHtml(std::string_view title, const PageAssets& assets) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"{}\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<title>{}</title>\n<style>{}</style>\n</head>\n<body>\n",
      policyOf(assets), htmlText(title), assets.style);
}

void appendChart(std::string& json, const Chart& chart) {
  std::string id;
  JsonWriter(id).value(chart.id);
  json += fmt::format(R"({}{{"id":{},"drawing":{},"table":{}}})", json.back() == '[' ? "" : ",", id,
                      chart.drawing, chart.table.json());
}

std::string chartsJson(const std::vector<ChartSection>& sections) {
  std::string json = fmt::format(R"({{"config":{},"charts":[)", chartConfig());
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

std::string documentOf(const PageContent& content, std::string_view program) {
  const PageAssets assets = pageAssets();
  return headHtml(content.title, assets) + content.body + "<footer><p class=\"soft\">Made by " +
         htmlText(program) +
         ". The charts are drawn by Vega-Lite; its licences stand at the head of the script in "
         "this page.</p></footer>\n<div id=\"tip\" role=\"tooltip\"></div>\n" +
         scriptsHtml(assets, content.sections) + "</body>\n</html>\n";
}

}  // namespace marrowbench::ctl
