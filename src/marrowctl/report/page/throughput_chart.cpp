#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/report/page/local_time.h"
#include "marrowctl/report/page/time_bins.h"
#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostBins = 240;

constexpr std::string_view kSteps = R"({
  "height": 240,
  "transform": [{"stack": "speed", "groupby": ["start"], "as": ["low", "high"]}],
  "mark": {"type": "rect", "style": "row"},
  "encoding": {
    "x": {"field": "start", "type": "temporal", "title": null, "scale": {"type": "utc"}, "axis": null},
    "x2": {"field": "end"},
    "y": {"field": "low", "type": "quantitative", "title": "MiB/s, all clients together"},
    "y2": {"field": "high"}
  }
})";

Chart chartOf(const Report& report, const ColourKey& key, const TimeBins& bins) {
  Chart chart{"throughput-time", "What all clients moved together, MiB/s", "",
              ChartTable({{"start", "From", ColumnKind::time},
                          {"end", "To", ColumnKind::time},
                          {"group", std::string(key.title()), ColumnKind::text},
                          {"speed", "MiB/s", ColumnKind::number}}),
              key.tellsTests()
                  ? ""
                  : "There are too many tests for a colour each: colours tell interfaces."};
  const auto bytes = bytesByBin(report, bins, key.names().size(),
                                [&key](const ResultRow& row) { return key.groupOf(row.test); });
  for (std::size_t bin = 0; bin < bins.count; ++bin) {
    for (std::size_t group = 0; group < bytes.size(); ++group) {
      if (bytes[group][bin] == 0) continue;
      chart.table.add({bins.startOf(bin), bins.startOf(bin + 1), key.names()[group],
                       mibPerSecond(bytes[group][bin], bins)});
    }
  }
  Json drawing = jsonFrom(kSteps);
  drawing["encoding"]["x"]["axis"] = timeAxis();
  drawing["encoding"]["color"] = key.channel("group");
  chart.drawing = jsonTextOf(drawing);
  return chart;
}

}  // namespace

ChartSection throughputSection(const Report& report) {
  ChartSection section{
      "throughput", "Aggregate throughput over time", "", {}, "No row moved any data."};
  const std::vector<std::uint32_t> tests = testsThatMoved(report);
  if (tests.empty()) return section;
  const TimeBins bins = timeBinsOf(report, kMostBins);
  section.legend = fmt::format(
      "The bytes of each row are spread evenly over its time and added up in steps of {:g} s. "
      "Times are "
      "local ({}).",
      bins.width, shownOffset(bins.start));
  section.charts.push_back(chartOf(report, ColourKey(report, tests), bins));
  return section;
}

}  // namespace marrowbench::ctl
