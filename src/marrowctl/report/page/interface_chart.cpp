#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/support/json_text.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kDrawing = R"({
  "height": 230,
  "encoding": {
    "x": {"field": "chunk", "type": "ordinal", "sort": null, "title": "Chunk size",
      "axis": {"labelAngle": 0, "ticks": false},
      "scale": {"paddingInner": 0.75, "paddingOuter": 0.4}},
    "xOffset": {"field": "interface", "type": "nominal"},
    "detail": {"field": "variant"}
  },
  "layer": [
    {"mark": {"type": "line", "style": "guide", "strokeWidth": 1.5, "opacity": 0.7}, "encoding": {
      "y": {"field": "median", "type": "quantitative", "title": "MiB/s of a row"}}},
    {"mark": {"type": "rule", "style": "part", "strokeWidth": 2}, "encoding": {
      "y": {"field": "p25", "type": "quantitative"}, "y2": {"field": "p75"}}},
    {"mark": {"type": "point", "style": "row", "filled": true, "size": 70, "opacity": 1}, "encoding": {
      "y": {"field": "median", "type": "quantitative"}}}
  ]
})";

struct Kind {
  TestType type;
  std::string_view id, title;
};

constexpr std::array<Kind, 3> kKinds = {{{TestType::write, "interfaces-write", "Writes, MiB/s"},
                                         {TestType::read, "interfaces-read", "Reads, MiB/s"},
                                         {TestType::copy, "interfaces-copy", "Copies, MiB/s"}}};

std::string chunkLabel(std::int64_t bytes) { return bytes > 0 ? shownSize(bytes) : "whole file"; }

// What tests that are joined by a line have in common, chunk size and interface aside.
std::string variantOf(const Parameters& p) {
  std::string text =
      p.fileKib > 0 ? "files of " + shownSize(p.fileKib * 1024) : "files as they are";
  if (p.systemBuffer >= 0) text += ", buffer " + std::to_string(p.systemBuffer);
  if (p.flush) text += ", flush";
  if (p.preallocate) text += ", preallocated";
  return text + (p.cacheMode != 0 ? ", cache mode " + std::to_string(p.cacheMode) : "");
}

// In one step comes last: it is the largest chunk that there is.
std::int64_t orderOf(std::int64_t chunkBytes) { return chunkBytes > 0 ? chunkBytes : INT64_MAX; }

std::vector<std::uint32_t> testsOf(const Report& report, TestType type) {
  std::vector<std::uint32_t> tests;
  for (const std::uint32_t test : testsThatMoved(report)) {
    const Parameters& parameters = report.results.tests[test].parameters;
    if (parameters.type == type && parameters.chunkWaitMs <= 0) tests.push_back(test);
  }
  std::stable_sort(tests.begin(), tests.end(), [&report](std::uint32_t a, std::uint32_t b) {
    return orderOf(report.results.tests[a].parameters.chunkBytes) <
           orderOf(report.results.tests[b].parameters.chunkBytes);
  });
  return tests;
}

// There is something to compare: another interface or another chunk size.
bool compares(const Report& report, const std::vector<std::uint32_t>& tests) {
  return std::any_of(tests.begin(), tests.end(), [&](std::uint32_t test) {
    const Parameters& one = report.results.tests[test].parameters;
    const Parameters& first = report.results.tests[tests.front()].parameters;
    return one.method != first.method || one.chunkBytes != first.chunkBytes;
  });
}

ChartTable tableOf(const Report& report, const std::vector<std::uint32_t>& tests) {
  ChartTable table({{"test", "Test", ColumnKind::text},
                    {"interface", "Interface", ColumnKind::text},
                    {"chunk", "Chunk size", ColumnKind::text},
                    {"variant", "Otherwise", ColumnKind::text},
                    {"rows", "Rows", ColumnKind::number},
                    {"p25", "25 % MiB/s", ColumnKind::number},
                    {"median", "Median MiB/s", ColumnKind::number},
                    {"p75", "75 % MiB/s", ColumnKind::number}});
  for (const std::uint32_t test : tests) {
    const ResultTest& known = report.results.tests[test];
    const Spread& speed = *report.tests[test].mibPerSecond;
    table.add({known.name, interfaceOf(known.parameters.method),
               chunkLabel(known.parameters.chunkBytes), variantOf(known.parameters),
               static_cast<double>(speed.count), speed.p25, speed.median, speed.p75});
  }
  return table;
}

std::string drawing() {
  Json chart = jsonFrom(kDrawing);
  chart["encoding"]["color"] = interfaceChannel("interface");
  chart["encoding"]["xOffset"]["sort"] = chart["encoding"]["color"]["scale"]["domain"];
  return jsonTextOf(chart);
}

}  // namespace

ChartSection interfaceSection(const Report& report) {
  ChartSection section{"interfaces",
                       "Streams, stdio and descriptors",
                       "For each test the median of its rows, of all clients, over the size of its "
                       "chunks; the line through "
                       "the point spans the quartiles. Tests that differ in nothing else are "
                       "joined; those with pauses after chunks are left out.",
                       {},
                       "No two tests of a kind differ in their interface or chunk size.",
                       Layout::grid};
  for (const Kind& kind : kKinds) {
    const std::vector<std::uint32_t> tests = testsOf(report, kind.type);
    if (!compares(report, tests)) continue;
    section.charts.push_back(
        {std::string(kind.id), std::string(kind.title), drawing(), tableOf(report, tests), ""});
  }
  return section;
}

}  // namespace marrowbench::ctl
