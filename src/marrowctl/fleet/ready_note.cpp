#include "marrowctl/fleet/ready_note.h"

#include <unistd.h>

#include <nlohmann/json.hpp>
#include <random>

#include "marrowctl/report/output.h"
#include "marrowctl/support/json_text.h"
#include "paths/host_name.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kSchema = "marrowctl.ready/1";

template <class Value>
Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json mountsOf(const MachineFacts& machine) {
  Json mounts = Json::array();
  for (const Mount& mount : machine.mounts) {
    mounts.push_back(Json{{"path", mount.point},
                          {"type", mount.type},
                          {"source", mount.source},
                          {"options", mount.options}});
  }
  return mounts;
}

std::string textIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

std::optional<std::int64_t> numberIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end() || !found->is_number_integer()) return std::nullopt;
  return found->get<std::int64_t>();
}

void takeMounts(const Json& object, MachineFacts& machine) {
  const auto found = object.find("mounts");
  if (found == object.end() || !found->is_array()) return;
  for (const Json& each : *found) {
    if (!each.is_object()) continue;
    machine.mounts.push_back({textIn(each, "path"), textIn(each, "type"), textIn(each, "source"),
                              textIn(each, "options")});
  }
}

// Two containers with the same name may have the same process id, and start in the same second.
std::string newId() {
  std::random_device source;
  constexpr const char* kDigits = "0123456789abcdef";
  std::string id;
  for (int i = 0; i < 16; ++i) id += kDigits[source() % 16];
  return id;
}

}  // namespace

std::string textOf(const ReadyNote& note, std::size_t atLeast) {
  const Json object = {{"schema", kSchema},
                       {"host", note.host},
                       {"run", note.run},
                       {"id", note.id},
                       {"time", note.time},
                       {"clockOffsetMs", orNull(note.clockOffsetMs)},
                       {"pid", note.pid},
                       {"marrowctl", note.marrowctl},
                       {"marrowbench", orNull(note.marrowbench)},
                       {"kernel", note.machine.kernel},
                       {"processors", note.machine.processors},
                       {"memoryBytes", note.machine.memoryBytes},
                       {"mounts", mountsOf(note.machine)}};
  std::string text = jsonTextOf(object);
  if (text.size() + 1 < atLeast) text.append(atLeast - text.size() - 1, ' ');
  return text + "\n";
}

std::optional<ReadyNote> readyNoteFrom(std::string_view text) {
  const Json object = jsonFrom(text);
  if (!object.is_object() || textIn(object, "schema") != kSchema) return std::nullopt;
  ReadyNote note;
  note.host = textIn(object, "host");
  note.run = textIn(object, "run");
  note.id = textIn(object, "id");
  note.time = textIn(object, "time");
  note.clockOffsetMs = numberIn(object, "clockOffsetMs");
  note.pid = numberIn(object, "pid").value_or(0);
  note.marrowctl = textIn(object, "marrowctl");
  if (const std::string version = textIn(object, "marrowbench"); !version.empty())
    note.marrowbench = version;
  note.machine.kernel = textIn(object, "kernel");
  note.machine.processors = numberIn(object, "processors").value_or(0);
  note.machine.memoryBytes = numberIn(object, "memoryBytes").value_or(0);
  takeMounts(object, note.machine);
  return note;
}

ReadyNote noteOfThisMachine(const ControlFolder& folder, const std::string& version) {
  ReadyNote note;
  note.host = hostName();
  note.run = folder.run;
  note.id = newId();
  note.time = isoTime(currentSeconds());
  note.pid = getpid();
  note.marrowctl = version;
  note.machine = factsOfThisMachine(folder.control);
  return note;
}

}  // namespace marrowbench::ctl
