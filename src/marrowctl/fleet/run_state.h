#ifndef MARROWBENCH_MARROWCTL_FLEET_RUN_STATE_H
#define MARROWBENCH_MARROWCTL_FLEET_RUN_STATE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// How far a run is. Times are milliseconds since the epoch by the share's clock.
namespace marrowbench::ctl {

enum class ClientState {
  ready,    ///< waits for the settings file, or for its minute
  running,  ///< the tests have begun, and not all markers are there
  done,     ///< all its markers are there, and newer than the settings file
  late,     ///< has no row yet, though half of the clients have had theirs for a minute
  missing   ///< never came, is gone, or has ended without its markers
};
inline constexpr std::size_t kClientStates = 5;

/// "ready", "running", "done", "late" or "missing".
[[nodiscard]] const char* nameOf(ClientState state);

struct WatchedClient {
  std::string host;
  // What was seen of it:
  bool hasReadyFile = false;  ///< at the last look
  std::optional<std::int64_t>
      touchedMs;                      ///< its ready file; nothing: nobody has asked yet, or none
  std::int64_t askedMs = 0;           ///< when that was asked: of thousands, some at each look
  std::optional<int> finishedStatus;  ///< of its finished file, when there is no ready file
  std::string finishedMessage;
  std::int64_t finishedMs = 0;  ///< when that file was written
  std::size_t markers = 0;      ///< fresh ones
  std::int64_t rows = 0;
  std::optional<std::int64_t> firstRowSeenMs;
  // What follows of it:
  ClientState state = ClientState::missing;
  std::string reason;  ///< why it is missing; else empty
};

struct WatchedLock {
  std::string table;
  std::string path;
  std::int64_t ageMs = 0;
};

struct RunState {
  std::string run;
  std::int64_t nowMs = 0;
  std::optional<std::int64_t> publishedMs;
  std::optional<std::int64_t> startMs;       ///< when the tests begin or began
  std::optional<std::int64_t> phaseStartMs;  ///< the same of a later phase, once it is published
  std::int64_t rowsBeforePhase = 0;          ///< of each client, by the phases before it
  std::vector<WatchedClient> clients;        ///< in no order
  std::int64_t namelessClients = 0;          ///< wanted, but nobody knows their names
  std::size_t markersPerClient = 0;          ///< of the files that are published
  std::int64_t rowsPerClient = 0;
  std::int64_t rows = 0;
  bool knowsOwners = false;  ///< rows tell which client they are from
  std::optional<std::int64_t> lastRowMs;
  std::vector<std::string> uncounted;  ///< templates of tables whose rows can't be followed
  std::vector<WatchedLock> locks;
  std::string trouble;  ///< why nothing could be seen at the last look; empty: it could
  std::string
      awaited;  ///< the settings file of the next phase, which is not there yet; empty: none

  [[nodiscard]] std::int64_t expectedRows() const;
  [[nodiscard]] std::int64_t expectedRowsBeforePhase() const;
  [[nodiscard]] std::int64_t count(ClientState state) const;
};

/// Clients that are ready, running or late.
[[nodiscard]] std::int64_t atWork(const RunState& state);

/// Clients that have done all that is published and wait for what is not.
[[nodiscard]] std::int64_t waitingForPhase(const RunState& state);

/// Sets the state of each client by what was seen of it.
void judgeClients(RunState& state);

/// Every marker is fresh and every expected row is there.
[[nodiscard]] bool isComplete(const RunState& state);

/// Nothing more will come: no client is ready, running or late, and none waits for a further phase;
/// before publication, every client was there and has ended, the last one not long ago.
[[nodiscard]] bool isOver(const RunState& state);

/// Seconds until the last row comes, at the pace of this phase's rows so far; nothing: it can't be
/// told, or nobody is left who could add one.
[[nodiscard]] std::optional<std::int64_t> secondsLeft(const RunState& state);

/// What is missing, a sentence each; empty: nothing is.
[[nodiscard]] std::vector<std::string> lacks(const RunState& state);

}  // namespace marrowbench::ctl

#endif
