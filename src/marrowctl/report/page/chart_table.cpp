#include "marrowctl/report/page/chart_table.h"

#include <fmt/format.h>

#include <cmath>

#include "marrowctl/report/page/local_time.h"
#include "marrowctl/support/json_writer.h"

namespace marrowbench::ctl {
namespace {

std::string_view nameOfKind(ColumnKind kind) {
  switch (kind) {
    case ColumnKind::text: return "text";
    case ColumnKind::number: return "number";
    case ColumnKind::time: return "time";
  }
  return "";
}

}  // namespace

ChartTable::ChartTable(std::vector<Column> heads) {
  for (Column& head : heads) columns.push_back({std::move(head), {}, {}, {}});
}

std::string ChartTable::valueOf(Values& column, const Cell& cell) {
  if (!cell.isSet || !std::isfinite(cell.number)) return "null";
  if (column.head.kind == ColumnKind::number) return fmt::format("{:.6g}", cell.number);
  if (column.head.kind == ColumnKind::time) {
    return fmt::format("{:.0f}", localSeconds(cell.number) * 1000.0);
  }
  auto known = column.places.find(cell.text);
  if (known == column.places.end()) {
    known = column.places.emplace(std::string(cell.text), column.texts.size()).first;
    column.texts.emplace_back(cell.text);
  }
  return std::to_string(known->second);
}

void ChartTable::add(std::initializer_list<Cell> cells) {
  auto column = columns.begin();
  for (const Cell& cell : cells) {
    if (rowCount > 0) column->json += ',';
    column->json += valueOf(*column, cell);
    ++column;
  }
  ++rowCount;
}

std::string ChartTable::json() const {
  std::string text = "[";
  for (const Values& column : columns) {
    std::string head;
    JsonWriter writer(head);
    writer.beginObject()
        .member("name", column.head.name)
        .member("title", column.head.title)
        .member("kind", nameOfKind(column.head.kind));
    if (column.head.kind == ColumnKind::text) {
      writer.key("texts").beginArray();
      for (const std::string& each : column.texts) writer.value(each);
      writer.endArray();
    }
    text += (text.size() > 1 ? "," : "") + head + ",\"values\":[" + column.json + "]}";
  }
  return text + "]";
}

}  // namespace marrowbench::ctl
