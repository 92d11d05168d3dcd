#include "marrowctl/fleet/published_note.h"

#include <nlohmann/json.hpp>

#include "marrowctl/support/json_text.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kSchema = "marrowctl.published/1";

std::int64_t numberIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_number_integer() ? found->get<std::int64_t>() : 0;
}

void takeTables(const Json& object, std::map<std::string, std::int64_t>& tables) {
  const auto found = object.find("tables");
  if (found == object.end() || !found->is_array()) return;
  for (const Json& each : *found) {
    if (each.is_object() && each.contains("path") && each["path"].is_string())
      tables[each["path"].get<std::string>()] = numberIn(each, "bytes");
  }
}

}  // namespace

std::string textOf(const PublishedNote& note) {
  Json tables = Json::array();
  for (const auto& [path, bytes] : note.tables)
    tables.push_back(Json{{"path", path}, {"bytes", bytes}});
  const Json object = {{"schema", kSchema},
                       {"run", note.run},
                       {"phase", note.phase},
                       {"time", note.time},
                       {"slowestClockMs", note.clocks.slowestMs},
                       {"fastestClockMs", note.clocks.fastestMs},
                       {"hosts", note.hosts},
                       {"tables", tables}};
  return jsonTextOf(object) + "\n";
}

std::optional<PublishedNote> publishedNoteFrom(std::string_view text) {
  const Json object = jsonFrom(text);
  if (!object.is_object() || object.value("schema", Json()) != kSchema) return std::nullopt;
  PublishedNote note;
  const auto run = object.find("run"), time = object.find("time"), hosts = object.find("hosts");
  if (run != object.end() && run->is_string()) note.run = run->get<std::string>();
  if (time != object.end() && time->is_string()) note.time = time->get<std::string>();
  note.phase = static_cast<int>(numberIn(object, "phase"));
  note.clocks = {numberIn(object, "slowestClockMs"), numberIn(object, "fastestClockMs")};
  if (hosts != object.end() && hosts->is_array()) {
    for (const Json& host : *hosts) {
      if (host.is_string()) note.hosts.push_back(host.get<std::string>());
    }
  }
  takeTables(object, note.tables);
  return note;
}

}  // namespace marrowbench::ctl
