#include "marrowctl/report/page/chart_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "helpers/environment_variable.h"

namespace marrowbench::ctl::test {
namespace {

nlohmann::json columnsOf(const ChartTable& table) { return nlohmann::json::parse(table.json()); }

TEST(ChartTable, HoldsEachTextOnce) {
  ChartTable table({{"client", "Client", ColumnKind::text}});
  for (const char* name : {"pc1", "pc2", "pc1"}) table.add({std::string_view(name)});
  const nlohmann::json column = columnsOf(table)[0];
  EXPECT_EQ(column["texts"], nlohmann::json({"pc1", "pc2"}));
  EXPECT_EQ(column["values"], nlohmann::json({0, 1, 0}));
  EXPECT_EQ(table.rows(), 3U);
}

TEST(ChartTable, TakesAnyBytesForText) {
  ChartTable table({{"client", "\"<\xFF", ColumnKind::text}});
  table.add({std::string_view("a\xFF\"\\</script>")});
  const nlohmann::json column = columnsOf(table)[0];
  EXPECT_EQ(column["texts"][0], "a\uFFFD\"\\</script>");
  EXPECT_EQ(column["title"], "\"<\uFFFD");
}

TEST(ChartTable, KeepsSixDigitsAndKnowsWhatIsUnknown) {
  ChartTable table({{"speed", "MiB/s", ColumnKind::number}});
  for (const double value :
       {1.0, 123.456789, 1e9, std::nan(""), std::numeric_limits<double>::infinity()})
    table.add({value});
  table.add({ChartTable::Cell()});
  EXPECT_EQ(columnsOf(table)[0]["values"],
            nlohmann::json({1.0, 123.457, 1e9, nullptr, nullptr, nullptr}));
}

TEST(ChartTable, GivesTimesAsTheyReadHere) {
  const marrowbench::test::EnvironmentVariable zone("TZ", "XYZ-2");
  ChartTable table({{"start", "Start", ColumnKind::time}});
  table.add({1000.25});
  EXPECT_EQ(columnsOf(table)[0]["values"][0], 1000250 + 2 * 3600 * 1000);
}

}  // namespace
}  // namespace marrowbench::ctl::test
