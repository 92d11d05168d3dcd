#include <string>

#include "marrowctl/fleet/probe_output.h"
#include "marrowctl/support/json_writer.h"

namespace marrowbench::ctl {
namespace {

void write(JsonWriter& json, const std::optional<Mount>& mount) {
  if (!mount) {
    json.null();
    return;
  }
  json.beginObject()
      .member("point", mount->point)
      .member("type", mount->type)
      .member("source", mount->source)
      .member("options", mount->options)
      .endObject();
}

void writeFolder(JsonWriter& json, const std::string& path, const std::optional<Mount>& mount) {
  json.beginObject().member("path", path).key("mount");
  write(json, mount);
  json.endObject();
}

void write(JsonWriter& json, const CreateRaces& races) {
  json.beginObject()
      .member("processes", std::int64_t{races.processes})
      .member("rounds", std::int64_t{races.rounds})
      .member("oneWinner", std::int64_t{races.oneWinner})
      .member("noWinner", std::int64_t{races.noWinner})
      .member("severalWinners", std::int64_t{races.severalWinners})
      .key("otherAnswers")
      .beginArray();
  for (const auto& [text, count] : races.otherAnswers)
    json.beginObject().member("text", text).member("count", std::int64_t{count}).endObject();
  json.endArray().endObject();
}

void write(JsonWriter& json, const RowTest& rows, const std::optional<double>& secondsPerRow) {
  json.beginObject()
      .member("clients", std::int64_t{rows.clients})
      .member("told", std::int64_t{rows.told})
      .member("kept", std::int64_t{rows.kept})
      .member("locked", std::int64_t{rows.locked})
      .member("failed", std::int64_t{rows.failed})
      .member("headers", std::int64_t{rows.headers})
      .member("strangeLines", std::int64_t{rows.strange})
      .member("leavesLock", rows.leavesLock)
      .member("secondsPerRow", secondsPerRow)
      .endObject();
}

void write(JsonWriter& json, const char* name, const Delays& delays) {
  json.key(name)
      .beginObject()
      .member("files", static_cast<std::int64_t>(delays.seen.size()) + delays.unseen)
      .member("unseen", std::int64_t{delays.unseen})
      .member("medianSeconds", delays.median())
      .member("longestSeconds", delays.longest())
      .endObject();
}

void write(JsonWriter& json, const SecondMount& second) {
  json.beginObject().member("limitSeconds", second.limitSeconds);
  write(json, "newFile", second.newFile);
  write(json, "newFileLookedFor", second.newFileLookedFor);
  write(json, "newFileListed", second.newFileListed);
  write(json, "removedFile", second.removedFile);
  write(json, "changedFile", second.changedFile);
  write(json, "replacedFile", second.replacedFile);
  json.endObject();
}

void write(JsonWriter& json, const FileTimes& times) {
  json.beginObject()
      .member("granularityNanoseconds", times.granularityNs)
      .member("leastAheadSeconds", times.leastAheadSeconds)
      .member("mostAheadSeconds", times.mostAheadSeconds)
      .endObject();
}

template <class Part>
void writeIfKnown(JsonWriter& json, const char* name, const std::optional<Part>& part) {
  json.key(name);
  if (part) {
    write(json, *part);
  } else {
    json.null();
  }
}

void writeTexts(JsonWriter& json, const char* name, const std::vector<std::string>& texts) {
  json.key(name).beginArray();
  for (const std::string& text : texts) json.value(text);
  json.endArray();
}

const char* nameOf(ProbeVerdict verdict) {
  switch (verdict) {
    case ProbeVerdict::oneTable: return "one table";
    case ProbeVerdict::ownTables: return "own tables";
    case ProbeVerdict::notUsable: break;
  }
  return "not usable";
}

}  // namespace

std::string probeJson(const Probe& probe, const ProbeJudgement& judgement) {
  std::string text;
  JsonWriter json(text);
  json.beginObject().member("schema", "marrowctl.probe/1").key("folders").beginArray();
  writeFolder(json, probe.asked.folder, probe.mount);
  if (!probe.asked.second.empty()) writeFolder(json, probe.asked.second, probe.secondMountPoint);
  json.endArray()
      .member("quick", probe.asked.isQuick)
      .member("seconds", probe.seconds)
      .member("verdict", nameOf(judgement.verdict));
  json.key("clients");
  if (judgement.clients) {
    json.value(std::int64_t{*judgement.clients});
  } else {
    json.null();
  }
  json.member("otherClientsSeen", probe.seesAnotherClient());
  writeTexts(json, "reasons", judgement.reasons);
  writeTexts(json, "notes", judgement.notes);
  writeTexts(json, "options", judgement.options);
  writeIfKnown(json, "exclusiveCreate", probe.races);
  json.key("rows");
  if (probe.rows) {
    write(json, *probe.rows, probe.secondsPerRow);
  } else {
    json.null();
  }
  writeIfKnown(json, "secondMount", probe.second);
  json.key("preallocation")
      .beginObject()
      .member("accepted", !probe.preallocationRefusal.has_value())
      .member("refusal", probe.preallocationRefusal)
      .endObject();
  writeIfKnown(json, "times", probe.times);
  json.member("caseSensitive", probe.isCaseSensitive).endObject();
  return text + "\n";
}

}  // namespace marrowbench::ctl
