#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "marrowctl/fleet/watch_text.h"
#include "marrowctl/report/output.h"
#include "marrowctl/support/json_writer.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMsOfSecond = 1000;

std::optional<std::string> timeOf(const std::optional<std::int64_t>& ms) {
  if (!ms) return std::nullopt;
  return isoTime(*ms / kMsOfSecond);
}

void writeCounts(JsonWriter& json, const RunState& state) {
  json.key("clients").beginObject().member(
      "expected", static_cast<std::int64_t>(state.clients.size()) + state.namelessClients);
  for (const ClientState each : {ClientState::ready, ClientState::running, ClientState::done,
                                 ClientState::late, ClientState::missing}) {
    json.member(nameOf(each), state.count(each));
  }
  json.endObject();
}

void writeHosts(JsonWriter& json, const RunState& state) {
  std::vector<const WatchedClient*> clients;
  for (const WatchedClient& client : state.clients) clients.push_back(&client);
  std::sort(clients.begin(), clients.end(),
            [](const WatchedClient* a, const WatchedClient* b) { return a->host < b->host; });
  json.key("hosts").beginArray();
  for (const WatchedClient* const client : clients) {
    std::optional<std::int64_t> rows;
    if (state.knowsOwners) rows = client->rows;
    json.beginObject()
        .member("host", client->host)
        .member("state", nameOf(client->state))
        .member("rows", rows)
        .member("markers", static_cast<std::int64_t>(client->markers))
        .member("reason", client->reason)
        .endObject();
  }
  json.endArray();
}

void writeLocks(JsonWriter& json, const RunState& state) {
  json.key("locks").beginArray();
  for (const WatchedLock& lock : state.locks) {
    json.beginObject()
        .member("path", lock.path)
        .member("ageSeconds", lock.ageMs / kMsOfSecond)
        .endObject();
  }
  json.endArray();
}

// The clients' minute by the share's clock, which is not quite theirs.
std::optional<std::int64_t> nearestSecond(std::optional<std::int64_t> ms) {
  if (!ms) return ms;
  return (*ms + kMsOfSecond / 2) / kMsOfSecond * kMsOfSecond;
}

}  // namespace

std::string watchJson(const RunState& state) {
  std::string text;
  JsonWriter json(text);
  json.beginObject()
      .member("schema", "marrowctl.watch/1")
      .member("run", state.run)
      .member("complete", isComplete(state))
      .member("published", timeOf(state.publishedMs))
      .member("start", timeOf(nearestSecond(state.startMs)));
  writeCounts(json, state);
  json.key("rows")
      .beginObject()
      .member("expected", state.publishedMs ? std::optional(state.expectedRows()) : std::nullopt)
      .member("found", state.rows)
      .endObject();
  const auto age =
      state.lastRowMs
          ? std::optional(std::max<std::int64_t>(state.nowMs - *state.lastRowMs, 0) / kMsOfSecond)
          : std::nullopt;
  json.member("lastRowAgeSeconds", age).member("secondsLeft", secondsLeft(state));
  json.key("uncountedTables").beginArray();
  for (const std::string& table : state.uncounted) json.value(table);
  json.endArray();
  writeLocks(json, state);
  json.member("awaited", state.awaited.empty() ? std::nullopt : std::optional(state.awaited));
  writeHosts(json, state);
  json.key("lacks").beginArray();
  for (const std::string& sentence : lacks(state)) json.value(sentence);
  json.endArray().endObject();
  return text + "\n";
}

}  // namespace marrowbench::ctl
