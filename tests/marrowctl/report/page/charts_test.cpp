#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/page/chart_style.h"
#include "marrowctl/report/page/made_report.h"

namespace marrowbench::ctl::test {
namespace {

using SectionMaker = ChartSection (*)(const Report&);
constexpr SectionMaker kSections[] = {clientSection,         timelineSection,  throughputSection,
                                      scalingSection,        interfaceSection, throttlingSection,
                                      firstIterationSection, troubleSection};

// The values of a column, in the order of the rows.
std::vector<double> numbersOf(const Chart& chart, const std::string& name) {
  std::vector<double> numbers;
  for (const auto& column : nlohmann::json::parse(chart.table.json())) {
    if (column["name"] == name) return column["values"].get<std::vector<double>>();
  }
  return numbers;
}

// Clients that come and go, errors, chunk sizes, interfaces and pauses: each section has its chart.
Report fullReport(int clients, int iterations) {
  std::vector<MadeRow> rows;
  for (int client = 0; client < clients; ++client) {
    for (int i = 0; i < iterations; ++i) {
      const std::string host = "pc" + std::to_string(1000 + client);
      const int end = 10 + 10 * i + (client == 0 ? 5 : 0);
      rows.push_back({host, end, 10000, i});
      rows.push_back({host, end, 10000, i, "Stream"});
      rows.push_back({host, end, 10000, i, "Posix", 1024});
      rows.push_back({host, end, 20000, i, "Posix", 64, 5, 50});
      if (i == 1) rows.push_back({host, end, 0, i, "AnsiC", 64, 0, 100, "ERROR: Can't open"});
    }
  }
  return madeReport(rows);
}

void expectFieldsOf(const Chart& chart) {
  std::set<std::string> columns, missing;
  for (const auto& column : nlohmann::json::parse(chart.table.json()))
    columns.insert(column["name"]);
  const nlohmann::json drawing = nlohmann::json::parse(chart.drawing);
  for (const auto& transform : drawing.value("transform", nlohmann::json::array())) {
    for (const auto& name : transform.value("as", nlohmann::json::array())) columns.insert(name);
    if (transform.value("as", nlohmann::json()).is_string()) columns.insert(transform["as"]);
  }
  const auto flat = drawing.flatten();
  for (const auto& [path, value] : flat.items()) {
    if (path.ends_with("/field") && !columns.contains(value)) missing.insert(value);
  }
  EXPECT_EQ(missing, std::set<std::string>()) << chart.id;
}

TEST(Charts, NameOnlyColumnsOfTheirTables) {
  const Report report = fullReport(3, 3);
  for (const SectionMaker make : kSections) {
    const ChartSection section = make(report);
    EXPECT_FALSE(section.charts.empty()) << section.id;
    for (const Chart& chart : section.charts) expectFieldsOf(chart);
  }
}

TEST(Charts, HaveAtMostFiveThousandMarks) {
  const Report report = fullReport(700, 3);
  for (const SectionMaker make : kSections) {
    for (const Chart& chart : make(report).charts) {
      EXPECT_GT(chart.table.rows(), 0U) << chart.id;
      EXPECT_LE(chart.table.rows(), kMostMarks) << chart.id;
    }
  }
}

TEST(Charts, SayWhyThereIsNone) {
  const Report report = madeReport({{"pc1", 9, 0, 0, "Posix", 64, 0, 100, "ERROR"}});
  for (const SectionMaker make : kSections) {
    const ChartSection section = make(report);
    EXPECT_TRUE(!section.charts.empty() || !section.absence.empty()) << section.id;
  }
}

TEST(TimelineChart, IsAHeatMapForManyRows) {
  EXPECT_NE(timelineSection(fullReport(3, 3)).charts[0].drawing.find("\"bar\""), std::string::npos);
  const Chart heat = timelineSection(fullReport(700, 3)).charts[0];
  EXPECT_NE(heat.drawing.find("\"rect\""), std::string::npos);
  EXPECT_NE(heat.note.find("too many"), std::string::npos);
}

TEST(ClientChart, ShowsTheSlowestAndTheFastestOfManyClients) {
  std::vector<MadeRow> rows;
  for (int client = 0; client < 5001; ++client)
    rows.push_back({"pc" + std::to_string(10000 + client), 3000, 1000 + client});
  const Chart chart = clientSection(madeReport(rows)).charts.at(0);
  const std::vector<double> ranks = numbersOf(chart, "rank");
  EXPECT_EQ(ranks.size(), kMostMarks / 2);
  EXPECT_EQ(ranks.front(), 1);
  EXPECT_EQ(ranks.back(), 5001);
  EXPECT_EQ(chart.note, "2500 of 5001 clients are shown, the slowest and the fastest among them.");
}

TEST(ClientChart, ShowsAllOfAFewHundredClients) {
  const Chart chart = clientSection(fullReport(300, 2)).charts.at(0);
  EXPECT_EQ(chart.table.rows(), 300U);
  EXPECT_EQ(chart.note, "");
}

TEST(ThrottlingChart, ExpectsTheShareOfFullSpeed) {
  const Chart chart = throttlingSection(fullReport(2, 2)).charts.at(0);
  EXPECT_EQ(numbersOf(chart, "percent"), (std::vector<double>{100, 50}));
  EXPECT_EQ(numbersOf(chart, "expected"), (std::vector<double>{10, 5}));
  EXPECT_EQ(numbersOf(chart, "median"), (std::vector<double>{10, 5}));
}

TEST(FirstIterationChart, ComparesMedians) {
  const Chart chart = firstIterationSection(madeReport({{"pc1", 10, 10000, 0},
                                                        {"pc1", 20, 5000, 1},
                                                        {"pc1", 30, 4000, 2},
                                                        {"pc1", 40, 2500, 3}}))
                          .charts.at(0);
  EXPECT_EQ(numbersOf(chart, "first"), (std::vector<double>{10}));
  EXPECT_EQ(numbersOf(chart, "later"), (std::vector<double>{25}));
}

TEST(ColourKey, TellsInterfacesWhereTestsAreTooMany) {
  std::vector<MadeRow> rows;
  for (int chunk = 1; chunk <= 9; ++chunk)
    rows.push_back({"pc1", 10 * chunk, 1000, 0, chunk % 2 == 0 ? "Posix" : "Stream", chunk});
  const Report nine = madeReport(rows);
  EXPECT_EQ(ColourKey(nine, testsThatMoved(nine)).names().size(), 2U);
  rows.pop_back();
  const Report eight = madeReport(rows);
  EXPECT_EQ(ColourKey(eight, testsThatMoved(eight)).names().size(), 8U);
}

}  // namespace
}  // namespace marrowbench::ctl::test
