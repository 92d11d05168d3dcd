#include "marrowctl/report/page/speed_pairs.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kRowHeight = 20;  // pixels

constexpr std::string_view kDrawing = R"({
  "encoding": {"y": {"field": "test", "type": "nominal", "sort": null, "title": null,
    "axis": {"labelOverlap": false, "ticks": false, "domain": false, "labelLimit": 360}}},
  "layer": [
    {"mark": {"type": "line", "style": "guide", "strokeWidth": 2, "opacity": 0.5, "color": "currentColor"}, "encoding": {
      "x": {"field": "speed", "type": "quantitative", "title": "MiB/s, median of rows", "scale": {"zero": true}},
      "detail": {"field": "test"}}},
    {"mark": {"type": "point", "style": "row", "size": 75, "opacity": 1, "filled": true}, "encoding": {
      "x": {"field": "speed", "type": "quantitative"},
      "color": {"field": "label", "type": "nominal", "title": null},
      "shape": {"field": "label", "type": "nominal", "title": null}}}
  ]
})";

}  // namespace

std::string speedPairsDrawing(const PairedSpeed& one, const PairedSpeed& other, std::size_t rows) {
  const Json labels = {one.label, other.label};
  Json drawing = jsonFrom(kDrawing);
  drawing["height"] = kRowHeight * rows;
  drawing["transform"] = {Json{{"fold", {one.field, other.field}}, {"as", {"which", "speed"}}},
                          Json{{"calculate", fmt::format("datum.which == '{}' ? '{}' : '{}'",
                                                         one.field, one.label, other.label)},
                               {"as", "label"}}};
  Json& points = drawing["layer"][1]["encoding"];
  points["color"]["scale"] = Json{{"domain", labels}, {"range", {one.colour, other.colour}}};
  points["shape"]["scale"] = Json{{"domain", labels}, {"range", {"diamond", "circle"}}};
  return jsonTextOf(drawing);
}

}  // namespace marrowbench::ctl
