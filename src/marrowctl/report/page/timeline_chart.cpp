#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/report/page/local_time.h"
#include "marrowctl/report/page/time_bins.h"
#include "marrowctl/support/json_text.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostNames = 60;
constexpr std::size_t kMostBins = 80;
constexpr std::size_t kRowHeight = 14;  // pixels

constexpr std::string_view kBars = R"({
  "mark": {"type": "bar", "style": "row", "height": {"band": 0.72}},
  "encoding": {
    "x": {"field": "start", "type": "temporal", "title": null, "scale": {"type": "utc"}, "axis": null},
    "x2": {"field": "end"},
    "y": {"field": "client", "type": "nominal", "title": null,
      "axis": {"labelOverlap": false, "ticks": false, "domain": false}}
  }
})";

constexpr std::string_view kHeat = R"({
  "mark": {"type": "rect", "style": "row"},
  "encoding": {
    "x": {"field": "start", "type": "temporal", "title": null, "scale": {"type": "utc"}, "axis": null},
    "x2": {"field": "end"},
    "y": {"field": "clients", "type": "nominal", "sort": null, "title": null,
      "axis": {"ticks": false, "domain": false}},
    "color": {"field": "speed", "type": "quantitative", "title": "MiB/s per client",
      "scale": {"scheme": "cividis", "zero": true},
      "legend": {"gradientLength": 220, "gradientThickness": 10}}
  }
})";

// Neighbours in the list of names that share a line of the heat map.
struct HostGroups {
  std::size_t size;
  std::vector<std::string> names;

  explicit HostGroups(const std::vector<std::string>& hosts)
      : size((hosts.size() + kMostNames - 1) / kMostNames) {
    for (std::size_t i = 0; i < hosts.size(); i += size) {
      const std::string& last = hosts[std::min(i + size, hosts.size()) - 1];
      names.push_back(size == 1 || hosts[i] == last ? hosts[i] : hosts[i] + " \u2013 " + last);
    }
  }

  [[nodiscard]] std::size_t membersOf(std::size_t group, std::size_t hosts) const {
    return std::min(size, hosts - group * size);
  }
};

std::vector<std::uint32_t> allTests(const Report& report) {
  std::vector<std::uint32_t> tests;
  for (std::uint32_t i = 0; i < report.tests.size(); ++i) {
    if (report.tests[i].rows > 0) tests.push_back(i);
  }
  return tests;
}

void addBar(ChartTable& table, const Report& report, const ColourKey& key,
            const RowCursor& cursor) {
  const ResultRow& row = cursor.row();
  const std::string error = row.hasError ? cursor.error() : "";
  table.add({report.results.hosts[row.host], report.results.tests[row.test].name,
             key.names()[key.groupOf(row.test)], static_cast<double>(row.iteration + 1),
             row.exactStart, static_cast<double>(row.end),
             static_cast<double>(row.milliseconds) / 1000.0,
             row.moved ? ChartTable::Cell(mibPerSecond(row)) : ChartTable::Cell(), error});
}

Chart barsOf(const Report& report) {
  const ColourKey key(report, allTests(report));
  Chart chart{"timeline-rows", "When each row ran, by client", "",
              ChartTable({{"client", "Client", ColumnKind::text},
                          {"test", "Test", ColumnKind::text},
                          {"colour", std::string(key.title()), ColumnKind::text},
                          {"iteration", "Iteration", ColumnKind::number},
                          {"start", "Start", ColumnKind::time},
                          {"end", "End", ColumnKind::time},
                          {"seconds", "Seconds", ColumnKind::number},
                          {"speed", "MiB/s", ColumnKind::number},
                          {"error", "Error", ColumnKind::text}}),
              ""};
  RowCursor cursor(report.results);
  while (cursor.next()) addBar(chart.table, report, key, cursor);
  Json drawing = jsonFrom(kBars);
  drawing["height"] = kRowHeight * report.results.hosts.size();
  drawing["encoding"]["x"]["axis"] = timeAxis();
  drawing["encoding"]["color"] = key.channel("colour");
  chart.drawing = jsonTextOf(drawing);
  return chart;
}

Chart heatMapOf(const Report& report) {
  const HostGroups groups(report.results.hosts);
  const TimeBins bins = timeBinsOf(report, kMostBins);
  const auto bytes = bytesByBin(report, bins, groups.names.size(),
                                [&groups](const ResultRow& row) { return row.host / groups.size; });
  Chart chart{
      "timeline-rows", "Speed of the clients over time", "",
      ChartTable({{"clients", groups.size == 1 ? "Client" : "Clients", ColumnKind::text},
                  {"start", "From", ColumnKind::time},
                  {"end", "To", ColumnKind::time},
                  {"speed", "MiB/s per client", ColumnKind::number}}),
      fmt::format("{} rows are too many for a bar each: shown is what each client moved in every "
                  "{:g} s{}.",
                  shownCount(report.rows.read), bins.width,
                  groups.size > 1 ? fmt::format(", as the mean of {} clients that are neighbours "
                                                "by name",
                                                groups.size)
                                  : "")};
  for (std::size_t group = 0; group < bytes.size(); ++group) {
    const auto members = static_cast<double>(groups.membersOf(group, report.results.hosts.size()));
    for (std::size_t bin = 0; bin < bins.count; ++bin) {
      if (bytes[group][bin] == 0) continue;
      chart.table.add({groups.names[group], bins.startOf(bin), bins.startOf(bin + 1),
                       mibPerSecond(bytes[group][bin], bins) / members});
    }
  }
  Json drawing = jsonFrom(kHeat);
  drawing["height"] = kRowHeight * groups.names.size();
  drawing["encoding"]["x"]["axis"] = timeAxis();
  chart.drawing = jsonTextOf(drawing);
  return chart;
}

}  // namespace

ChartSection timelineSection(const Report& report) {
  ChartSection section{"timeline", "Timeline", "", {}, "There are no rows."};
  if (report.rows.read == 0) return section;
  const bool hasBars =
      report.results.judgedRows <= kMostMarks && report.results.hosts.size() <= kMostNames;
  section.charts.push_back(hasBars ? barsOf(report) : heatMapOf(report));
  const double first = section.charts.empty() ? 0 : timeBinsOf(report, kMostBins).start;
  section.legend = fmt::format(
      "{} A row's end is the date in the table, its start the end less its time: both are known to "
      "one "
      "second. Times are local ({}).",
      hasBars ? "A bar is a row."
              : "The darker, the slower; nothing was moved where there is no colour.",
      shownOffset(first));
  return section;
}

}  // namespace marrowbench::ctl
