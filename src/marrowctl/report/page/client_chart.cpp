#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostTests = 48;
// More names can't be read beside each other.
constexpr std::size_t kMostNames = 40;
constexpr std::size_t kRowHeight = 15;  // pixels
// Of all charts of clients together: they are most of what a browser has to draw.
constexpr std::size_t kMostClients = 5000;

constexpr std::string_view kBoxes = R"({
  "encoding": {
    "y": {"field": "client", "type": "nominal", "sort": null, "title": null,
      "axis": {"labelOverlap": false, "ticks": false, "domain": false}}
  },
  "layer": [
    {"mark": {"type": "rule", "style": "part", "opacity": 0.6}, "encoding": {
      "x": {"field": "min", "type": "quantitative", "title": "MiB/s", "scale": {"zero": true}},
      "x2": {"field": "max"}}},
    {"mark": {"type": "bar", "style": "row", "height": 8}, "encoding": {
      "x": {"field": "p25", "type": "quantitative"}, "x2": {"field": "p75"}}},
    {"mark": {"type": "tick", "style": "part", "thickness": 3, "height": 12, "color": "currentColor"}, "encoding": {
      "x": {"field": "median", "type": "quantitative"}}}
  ]
})";

constexpr std::string_view kRanks = R"({
  "height": 190,
  "encoding": {
    "x": {"field": "rank", "type": "quantitative", "title": "Clients, slowest first",
      "scale": {"zero": false, "nice": false, "padding": 5}}
  },
  "layer": [
    {"mark": {"type": "rule", "style": "part", "strokeWidth": 2, "opacity": 0.45}, "encoding": {
      "y": {"field": "p25", "type": "quantitative", "title": "MiB/s", "scale": {"zero": true}},
      "y2": {"field": "p75"}}},
    {"mark": {"type": "point", "style": "row", "filled": true, "size": 16}, "encoding": {
      "y": {"field": "median", "type": "quantitative"}}}
  ]
})";

// Clients of a test that moved something.
std::vector<const ClientReport*> clientsOf(const TestReport& test) {
  std::vector<const ClientReport*> clients;
  for (const ClientReport& client : test.clients) {
    if (client.mibPerSecond) clients.push_back(&client);
  }
  return clients;
}

bool isSlower(const ClientReport* a, const ClientReport* b) {
  return a->mibPerSecond->median < b->mibPerSecond->median;
}

// So many of the clients, evenly from the first to the last one.
ChartTable tableOf(const Report& report, const std::vector<const ClientReport*>& clients,
                   std::size_t shown) {
  ChartTable table({{"client", "Client", ColumnKind::text},
                    {"rank", "Rank", ColumnKind::number},
                    {"rows", "Rows", ColumnKind::number},
                    {"min", "Min MiB/s", ColumnKind::number},
                    {"p25", "25 % MiB/s", ColumnKind::number},
                    {"median", "Median MiB/s", ColumnKind::number},
                    {"p75", "75 % MiB/s", ColumnKind::number},
                    {"max", "Max MiB/s", ColumnKind::number}});
  for (std::size_t i = 0; i < shown; ++i) {
    const std::size_t rank = shown == clients.size() ? i : i * (clients.size() - 1) / (shown - 1);
    const Spread& speed = *clients[rank]->mibPerSecond;
    table.add({report.results.hosts[clients[rank]->host], static_cast<double>(rank + 1),
               static_cast<double>(speed.count), speed.min, speed.p25, speed.median, speed.p75,
               speed.max});
  }
  return table;
}

// The colour of the interface, on boxes and points; whiskers and medians keep that of the text.
std::string drawingOf(bool hasNames, std::size_t clients, Method method) {
  Json chart = jsonFrom(hasNames ? kBoxes : kRanks);
  if (hasNames) chart["height"] = kRowHeight * clients;
  for (Json& layer : chart["layer"]) {
    Json& mark = layer["mark"];
    if (mark["type"] == "bar" || mark["type"] == "point") mark["color"] = colourOf(method);
  }
  return jsonTextOf(chart);
}

Chart chartOf(const Report& report, std::uint32_t test, std::size_t mostClients) {
  std::vector<const ClientReport*> clients = clientsOf(report.tests[test]);
  const bool hasNames = clients.size() <= kMostNames;
  if (!hasNames) std::stable_sort(clients.begin(), clients.end(), isSlower);
  const std::size_t shown = hasNames ? clients.size() : std::min(clients.size(), mostClients);
  const ResultTest& known = report.results.tests[test];
  Chart chart{"clients-" + std::to_string(test + 1), known.name,
              drawingOf(hasNames, clients.size(), known.parameters.method),
              tableOf(report, clients, shown), ""};
  if (shown < clients.size()) {
    chart.note = fmt::format("{} of {} clients are shown, the slowest and the fastest among them.",
                             shown, clients.size());
  }
  return chart;
}

}  // namespace

ChartSection clientSection(const Report& report) {
  ChartSection section{
      "clients",
      "Speed by client",
      "MiB/s of the rows of each client: the box spans the quartiles (linear "
      "interpolation between order statistics), the thin line reaches from the "
      "slowest to the fastest row, the mark is the median. With more than 40 clients a "
      "point is a client's median and its line spans the quartiles. Rows with errors "
      "are left out. Blue are streams, orange is stdio, green are descriptors. 1 MiB is "
      "1,048,576 bytes.",
      {},
      "No row moved any data.",
      Layout::small};
  const std::vector<std::uint32_t> tests = testsThatMoved(report);
  const std::size_t charts = std::min(tests.size(), kMostTests);
  for (std::size_t i = 0; i < charts; ++i) {
    // A line and a point for each client.
    section.charts.push_back(
        chartOf(report, tests[i], std::min(kMostMarks / 2, kMostClients / charts)));
  }
  if (tests.size() > kMostTests) {
    section.legend +=
        fmt::format(" Only the first {} of {} tests are drawn; the table of tests has all.",
                    kMostTests, tests.size());
  }
  return section;
}

}  // namespace marrowbench::ctl
