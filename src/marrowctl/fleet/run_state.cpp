#include "marrowctl/fleet/run_state.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "marrowctl/fleet/ready_file.h"
#include "marrowctl/report/completeness.h"
#include "marrowctl/support/shell_words.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMsOfSecond = 1000;
constexpr std::int64_t kLateMs = 60'000;
// Six times as long as a client waits for a lock.
constexpr std::int64_t kLeftBehindMs = 60'000;
constexpr std::size_t kMostNames = 20;

// When half of the clients had their first row; nothing while fewer have one.
std::optional<std::int64_t> middleOfFirstRows(const RunState& state) {
  std::vector<std::int64_t> times;
  for (const WatchedClient& client : state.clients) {
    if (client.firstRowSeenMs) times.push_back(*client.firstRowSeenMs);
  }
  if (times.empty() || times.size() * 2 < state.clients.size()) return std::nullopt;
  std::sort(times.begin(), times.end());
  return times[(state.clients.size() + 1) / 2 - 1];
}

bool hasAllMarkers(const RunState& state, const WatchedClient& client) {
  return state.publishedMs && client.markers >= state.markersPerClient &&
         // Without a marker that could be asked for, rows or the end of the program tell it.
         (state.markersPerClient > 0 || client.finishedStatus == 0 ||
          (state.rowsPerClient > 0 && client.rows >= state.rowsPerClient));
}

// Of those that are missing none will come.
std::int64_t rowsToCome(const RunState& state) {
  std::int64_t rows = state.expectedRows() - state.rows;
  rows -= state.rowsPerClient * state.namelessClients;
  for (const WatchedClient& client : state.clients) {
    if (client.state == ClientState::missing)
      rows -= std::max<std::int64_t>(state.rowsPerClient - client.rows, 0);
  }
  return std::max<std::int64_t>(rows, 0);
}

// Who never came may still come, and where all ended long ago they may be armed again.
bool hasEveryoneJustEnded(const RunState& state) {
  std::int64_t lastMs = 0;
  for (const WatchedClient& client : state.clients) {
    if (!client.finishedStatus) return false;
    lastMs = std::max(lastMs, client.finishedMs);
  }
  return state.namelessClients == 0 && state.nowMs - lastMs < kGoneSeconds * kMsOfSecond;
}

std::string endOf(const WatchedClient& client) {
  return client.finishedMessage.empty() ? fmt::format("exit status {}", *client.finishedStatus)
                                        : client.finishedMessage;
}

// Why nobody is there any more; empty: somebody is.
std::string absenceOf(const RunState& state, const WatchedClient& client) {
  if (client.finishedStatus) return "it has ended before its last marker: " + endOf(client);
  if (!client.touchedMs) return client.rows > 0 || client.hasReadyFile ? "" : "it never came";
  // A file that is there has been touched since, unless it was old when it was asked.
  const std::int64_t until = client.hasReadyFile ? client.askedMs : state.nowMs;
  const std::int64_t age = (until - *client.touchedMs) / kMsOfSecond;
  if (age < kGoneSeconds) return {};
  return "it is gone: nobody has touched its ready file for " + shownDuration(age);
}

void judge(const RunState& state, std::optional<std::int64_t> middle, WatchedClient& client) {
  client.reason.clear();
  if (hasAllMarkers(state, client)) {
    if (client.finishedStatus && !state.awaited.empty()) {
      client.reason = "it has ended before the next phase: " + endOf(client);
      client.state = ClientState::missing;
      return;
    }
    client.state = ClientState::done;
    return;
  }
  client.reason = absenceOf(state, client);
  if (!client.reason.empty()) {
    client.state = ClientState::missing;
    return;
  }
  const bool hasBegun = client.rows > 0 || (state.startMs && state.nowMs >= *state.startMs);
  if (!state.publishedMs || !hasBegun) {
    client.state = ClientState::ready;
    return;
  }
  const bool isLate =
      client.rows == 0 && state.rowsPerClient > 0 && middle && state.nowMs - *middle >= kLateMs;
  client.state = isLate ? ClientState::late : ClientState::running;
}

std::string namesOf(const RunState& state, ClientState wanted) {
  std::vector<std::string> hosts;
  for (const WatchedClient& client : state.clients) {
    if (client.state == wanted) hosts.push_back(client.host);
  }
  std::sort(hosts.begin(), hosts.end());
  return shownNames(hosts, kMostNames);
}

void addMissing(const RunState& state, std::vector<std::string>& sentences) {
  std::map<std::string, std::vector<std::string>> byReason;
  for (const WatchedClient& client : state.clients) {
    if (client.state == ClientState::missing) byReason[client.reason].push_back(client.host);
  }
  for (auto& [reason, hosts] : byReason) {
    std::sort(hosts.begin(), hosts.end());
    sentences.push_back(fmt::format("missing: {}: {}", shownNames(hosts, kMostNames), reason));
  }
  if (state.namelessClients > 0) {
    sentences.push_back(fmt::format("missing: {} of which no name is known",
                                    shownCount(state.namelessClients, "client")));
  }
}

void addRows(const RunState& state, std::vector<std::string>& sentences) {
  const std::int64_t lacking = state.expectedRows() - state.rows;
  if (lacking <= 0) return;
  std::string sentence =
      fmt::format("{} of {} missing", shownCount(lacking), shownCount(state.expectedRows(), "row"));
  if (state.knowsOwners) {
    std::vector<std::string> hosts;
    for (const WatchedClient& client : state.clients) {
      if (client.rows < state.rowsPerClient) {
        hosts.push_back(
            fmt::format("{} ({})", client.host, shownCount(state.rowsPerClient - client.rows)));
      }
    }
    std::sort(hosts.begin(), hosts.end());
    if (!hosts.empty()) sentence += ", of " + shownNames(hosts, kMostNames);
  }
  sentences.push_back(sentence);
}

// A client that is killed while it holds the lock of a table keeps all others from it.
void addLocks(const RunState& state, std::vector<std::string>& sentences) {
  for (const WatchedLock& lock : state.locks) {
    if (!isOver(state) && lock.ageMs < kLeftBehindMs) continue;
    sentences.push_back(fmt::format(
        "the lock {} is {} old: no row is appended while it is there. \"marrowctl fleet unlock "
        "--table {}\" shows it, and with --age and --yes removes it",
        lock.path, shownDuration(lock.ageMs / kMsOfSecond), shellWord(lock.table)));
  }
}

}  // namespace

const char* nameOf(ClientState state) {
  switch (state) {
    case ClientState::ready: return "ready";
    case ClientState::running: return "running";
    case ClientState::done: return "done";
    case ClientState::late: return "late";
    case ClientState::missing: return "missing";
  }
  return "";
}

std::int64_t RunState::expectedRows() const {
  return rowsPerClient * (static_cast<std::int64_t>(clients.size()) + namelessClients);
}

std::int64_t RunState::expectedRowsBeforePhase() const {
  return rowsBeforePhase * (static_cast<std::int64_t>(clients.size()) + namelessClients);
}

std::int64_t RunState::count(ClientState wanted) const {
  const auto number =
      std::count_if(clients.begin(), clients.end(),
                    [wanted](const WatchedClient& client) { return client.state == wanted; });
  return number + (wanted == ClientState::missing ? namelessClients : 0);
}

void judgeClients(RunState& state) {
  const auto middle = state.knowsOwners ? middleOfFirstRows(state) : std::nullopt;
  for (WatchedClient& client : state.clients) judge(state, middle, client);
}

bool isComplete(const RunState& state) {
  const auto all = static_cast<std::int64_t>(state.clients.size());
  return state.publishedMs && all > 0 && state.namelessClients == 0 && state.awaited.empty() &&
         state.count(ClientState::done) == all && state.rows >= state.expectedRows();
}

std::int64_t atWork(const RunState& state) {
  return state.count(ClientState::ready) + state.count(ClientState::running) +
         state.count(ClientState::late);
}

std::int64_t waitingForPhase(const RunState& state) {
  return state.awaited.empty() ? 0 : state.count(ClientState::done);
}

bool isOver(const RunState& state) {
  if (state.clients.empty()) return false;
  if (!state.publishedMs) return hasEveryoneJustEnded(state);
  return atWork(state) == 0 && waitingForPhase(state) == 0;
}

std::optional<std::int64_t> secondsLeft(const RunState& state) {
  const auto start = state.phaseStartMs ? state.phaseStartMs : state.startMs;
  if (!start || state.rows > state.expectedRows()) return std::nullopt;
  const std::int64_t left = rowsToCome(state);
  const std::int64_t passed = state.nowMs - *start;
  const std::int64_t rows = state.rows - state.expectedRowsBeforePhase();
  if (passed < 0 || rows <= 0 || (left > 0 && atWork(state) == 0)) return std::nullopt;
  return static_cast<std::int64_t>(static_cast<double>(passed) * static_cast<double>(left) /
                                   static_cast<double>(rows)) /
         kMsOfSecond;
}

std::vector<std::string> lacks(const RunState& state) {
  std::vector<std::string> sentences;
  if (!state.trouble.empty()) sentences.push_back("nothing can be seen: " + state.trouble);
  if (!state.publishedMs) {
    sentences.emplace_back("nothing has been published for this run yet");
    addMissing(state, sentences);
    return sentences;
  }
  addMissing(state, sentences);
  for (const ClientState each : {ClientState::ready, ClientState::running, ClientState::late}) {
    if (state.count(each) > 0)
      sentences.push_back(fmt::format("still {}: {}", nameOf(each), namesOf(state, each)));
  }
  addRows(state, sentences);
  addLocks(state, sentences);
  if (!state.awaited.empty()) {
    sentences.push_back(state.awaited + " has not been published" +
                        (isOver(state) ? "" : " yet, and clients wait for it"));
  }
  if (state.clients.empty()) sentences.emplace_back("no client is known");
  return sentences;
}

}  // namespace marrowbench::ctl
