#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostClients = 40;
constexpr std::size_t kRowHeight = 18;  // pixels

constexpr std::string_view kDrawing = R"({
  "transform": [{"fold": ["errors", "nullData"], "as": ["which", "rows"]}, {"filter": "datum.rows > 0"},
    {"calculate": "datum.which == 'errors' ? 'error rows' : 'rows with null data'", "as": "label"}],
  "mark": {"type": "bar", "style": "row", "height": {"band": 0.7}},
  "encoding": {
    "y": {"field": "client", "type": "nominal", "sort": null, "title": null,
      "axis": {"labelOverlap": false, "ticks": false}},
    "x": {"field": "rows", "type": "quantitative", "title": "Rows", "axis": {"tickMinStep": 1, "format": "d"}},
    "color": {"field": "label", "type": "nominal", "title": null, "scale": {
      "domain": ["error rows", "rows with null data"], "range": ["#d55e00", "#56b4e9"]}}
  }
})";

struct Trouble {
  std::uint32_t host = 0;
  std::int64_t rows = 0, errors = 0, nullData = 0;
};

std::vector<Trouble> troubles(const Report& report) {
  std::vector<Trouble> byHost(report.results.hosts.size());
  RowCursor cursor(report.results, Unpacking::nothing);
  while (cursor.next()) {
    const ResultRow& row = cursor.row();
    Trouble& host = byHost[row.host];
    host.host = row.host;
    ++host.rows;
    if (row.hasError) ++host.errors;
    if (!row.hasError && row.nullPosition > 0) ++host.nullData;
  }
  std::erase_if(byHost, [](const Trouble& each) { return each.errors + each.nullData == 0; });
  std::stable_sort(byHost.begin(), byHost.end(), [](const Trouble& a, const Trouble& b) {
    return a.errors + a.nullData > b.errors + b.nullData;
  });
  return byHost;
}

}  // namespace

ChartSection troubleSection(const Report& report) {
  ChartSection section{
      "trouble",
      "Errors and null data",
      "Rows that failed, and rows in whose data a run of null bytes was found, by client.",
      {},
      ""};
  const std::vector<Trouble> found = troubles(report);
  if (found.empty()) return section;
  ChartTable table({{"client", "Client", ColumnKind::text},
                    {"rows", "Rows", ColumnKind::number},
                    {"errors", "Error rows", ColumnKind::number},
                    {"nullData", "Rows with null data", ColumnKind::number}});
  for (std::size_t i = 0; i < std::min(found.size(), kMostClients); ++i) {
    table.add({report.results.hosts[found[i].host], static_cast<double>(found[i].rows),
               static_cast<double>(found[i].errors), static_cast<double>(found[i].nullData)});
  }
  Json drawing = jsonFrom(kDrawing);
  drawing["height"] = kRowHeight * table.rows();
  section.charts.push_back({"trouble-clients", "Rows in trouble, by client", jsonTextOf(drawing),
                            table,
                            found.size() > kMostClients
                                ? fmt::format("The {} clients with most of them are shown, of {}.",
                                              kMostClients, found.size())
                                : ""});
  return section;
}

}  // namespace marrowbench::ctl
