#include "marrowctl/report/page/chart_style.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

// M. Okabe and K. Ito, Color Universal Design, 2008; a grey stands for their black, which a dark
// page would hide, and yellow comes last: a light one would.
constexpr std::array<std::string_view, kMostColours> kColours = {
    "#0072b2", "#e69f00", "#009e73", "#cc79a7", "#56b4e9", "#d55e00", "#8a8f98", "#f0e442"};

Json channelOf(std::string_view field, std::string_view title,
               const std::vector<std::string>& labels, const std::vector<std::string>& colours) {
  return {{"field", field},
          {"type", "nominal"},
          {"title", title},
          {"sort", nullptr},
          {"scale", {{"domain", labels}, {"range", colours}}}};
}

}  // namespace

std::string interfaceOf(Method method) {
  std::string name(nameOf(method));
  switch (method) {
    case Method::stream: return "streams (" + name + ")";
    case Method::ansiC: return "stdio (" + name + ")";
    case Method::posix: return "descriptors (" + name + ")";
    default: return name;
  }
}

std::string_view colourOf(Method method) {
  switch (method) {
    case Method::stream: return kColours[0];
    case Method::ansiC: return kColours[1];
    case Method::posix: return kColours[2];
    default: return kColours[6];
  }
}

ColourKey::ColourKey(const Report& report, const std::vector<std::uint32_t>& shown)
    : isByTest(shown.size() <= kMostColours), groups(report.tests.size()) {
  for (const std::uint32_t test : shown) {
    const ResultTest& known = report.results.tests[test];
    if (isByTest) {
      add(test, known.name, kColours[labels.size()]);
    } else {
      add(test, interfaceOf(known.parameters.method), colourOf(known.parameters.method));
    }
  }
}

void ColourKey::add(std::uint32_t test, const std::string& label, std::string_view colour) {
  const auto known = std::find(labels.begin(), labels.end(), label);
  groups[test] = static_cast<std::size_t>(known - labels.begin());
  if (known != labels.end()) return;
  labels.push_back(label);
  colours.emplace_back(colour);
}

Json ColourKey::channel(std::string_view field) const {
  Json channel = channelOf(field, title(), labels, colours);
  // Names of tests are long.
  channel["legend"] = {{"columns", isByTest ? 1 : labels.size()}};
  return channel;
}

Json interfaceChannel(std::string_view field) {
  std::vector<std::string> labels, colours;
  for (const Method method : {Method::stream, Method::ansiC, Method::posix}) {
    labels.push_back(interfaceOf(method));
    colours.emplace_back(colourOf(method));
  }
  Json channel = channelOf(field, "Interface", labels, colours);
  channel["legend"] = {{"columns", labels.size()}};
  return channel;
}

Json timeAxis() {
  return jsonFrom(R"({"labelFlush": false, "tickCount": 8, "format": {
    "year": "%Y", "month": "%d %b", "week": "%d %b", "date": "%d %b", "day": "%d %b", "hours": "%H:%M",
    "minutes": "%H:%M", "seconds": "%H:%M:%S", "milliseconds": "%H:%M:%S"}})");
}

std::vector<std::uint32_t> testsThatMoved(const Report& report) {
  std::vector<std::uint32_t> tests;
  for (std::uint32_t i = 0; i < report.tests.size(); ++i) {
    if (report.tests[i].mibPerSecond) tests.push_back(i);
  }
  return tests;
}

std::string_view chartConfig() {
  return R"({
    "background": null,
    "font": "system-ui, -apple-system, 'Segoe UI', 'Liberation Sans', sans-serif",
    "view": {"stroke": null},
    "axis": {"labelColor": "currentColor", "titleColor": "currentColor", "tickColor": "currentColor",
      "domainColor": "currentColor", "gridColor": "currentColor", "gridOpacity": 0.13, "domainOpacity": 0.4,
      "tickOpacity": 0.4, "labelFontSize": 11, "titleFontSize": 12, "titleFontWeight": 500,
      "labelOverlap": true, "labelSeparation": 8, "labelLimit": 220, "titlePadding": 8},
    "axisY": {"titleAnchor": "end"},
    "legend": {"orient": "top", "labelColor": "currentColor", "titleColor": "currentColor",
      "labelFontSize": 11, "titleFontSize": 11, "labelLimit": 320, "columns": 2, "symbolType": "square", "symbolOpacity": 1},
    "style": {
      "row": {"tooltip": {"content": "data"}, "description": {"expr": "datum.spoken"}},
      "part": {"tooltip": {"content": "data"}, "aria": false},
      "guide": {"aria": false}
    },
    "text": {"color": "currentColor"},
    "rule": {"color": "currentColor"},
    "header": {"labelColor": "currentColor", "titleColor": "currentColor"}
  })";
}

}  // namespace marrowbench::ctl
