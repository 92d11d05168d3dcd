#include "marrowctl/fleet/run_watch.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <utility>

#include "marrowctl/fleet/finished_note.h"
#include "marrowctl/fleet/in_turn.h"
#include "marrowctl/fleet/open_file.h"
#include "marrowctl/fleet/ready_file.h"
#include "marrowctl/fleet/start_window.h"
#include "marrowctl/plan/done_markers.h"
#include "marrowctl/plan/expansion.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/plan/totals.h"
#include "support/clock.h"
#include "support/file_status.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kMsOfSecond = 1000;
constexpr std::int64_t kClockEveryMs = 60'000;

}  // namespace

RunWatch::RunWatch(ControlFolder runFolder, const Wanted& wanted)
    : folder(std::move(runFolder)), wantedClients(wanted.clients) {
  seen.run = folder.run;
  for (const std::string& host : wanted.hosts) {
    invited.insert(host);
    (void)indexOf(host);
  }
}

void RunWatch::lookAt(std::size_t mostFiles) {
  folders.forget();
  readClock();
  if (!readFolder()) return;
  if (isPlanWanting()) readPlan();
  if (clientsOfTables != seen.clients.size()) addTables();
  for (WatchedClient& client : seen.clients) client.markers = 0;
  for (const PlannedFile& file : plan.files) {
    if (leavesMarker(file)) readMarkers(file);
  }
  readTouches(mostFiles);
  followTables(mostFiles);
  seen.locks = tables.locks(mostFiles, seen.nowMs);
  takeStock();
}

// A folder that this machine may only read is as good: its clock is taken for the share's then.
void RunWatch::readClock() {
  std::int64_t now = 0;
  nowMs(now);
  if (!share || now - clockReadMs >= kClockEveryMs || now < clockReadMs) {
    ClockReading reading{now, now, true};
    const int code = readShareClock(folder.control, reading);
    // What was read before is better than nothing.
    if (code == 0 || !share) share.emplace(reading);
    clockReadMs = now;
  }
  seen.nowMs = share->nowMs();
}

// False: nothing can be seen now. What was seen before stays.
bool RunWatch::readFolder() {
  const FolderListing& listing = folders.of(folder.path());
  std::string problem;
  // Before the first client is armed there is no such folder.
  if (listing.code == ENOENT) {
    problem = problemOfShare(folder);
  } else if (listing.code != 0) {
    problem = folder.path() + ": " + std::strerror(listing.code);
  }
  const bool isLasting = shareTrouble.isLasting(problem.empty() ? 0 : listing.code);
  trouble = isLasting ? problem : "";
  seen.trouble = problem;
  if (problem.empty()) takeNames(listing.names);
  return problem.empty();
}

void RunWatch::takeNames(const std::vector<std::string>& names) {
  readyHosts.clear();
  std::set<std::string> finished;
  for (const std::string& name : names) {
    if (strangers.contains(name)) continue;
    if (name.starts_with(kReadyPrefix)) readyHosts.insert(name.substr(kReadyPrefix.size()));
    if (name.starts_with(kFinishedPrefix)) finished.insert(name.substr(kFinishedPrefix.size()));
  }
  if (seen.publishedMs) {
    const std::int64_t published = *seen.publishedMs;
    std::erase_if(readyHosts, [&](const std::string& host) {
      return isStranger(host, folder.ready(host), published - kGoneSeconds * kMsOfSecond);
    });
    std::erase_if(finished, [&](const std::string& host) {
      return isStranger(host, folder.finished(host), published);
    });
  }
  for (const std::string& host : readyHosts) {
    WatchedClient& client = seen.clients[indexOf(host)];
    client.finishedStatus.reset();
    finishedHosts.erase(host);
  }
  for (const std::string& host : finished) {
    if (!readyHosts.contains(host) && finishedHosts.insert(host).second) readFinished(host);
  }
}

// Files of clients that had gone before the run was published are those of an earlier one.
bool RunWatch::isStranger(const std::string& host, const std::string& file, std::int64_t leastMs) {
  if (indices.contains(host) || modifiedMsOf(file).value_or(0) >= leastMs) return false;
  strangers.insert(file.substr(file.rfind('/') + 1));
  return true;
}

void RunWatch::readFinished(const std::string& host) {
  WatchedClient& client = seen.clients[indexOf(host)];
  const auto note = finishedNoteFrom(textIn(folder.finished(host)));
  client.touchedMs.reset();
  client.finishedStatus = note ? note->status : 0;
  client.finishedMessage = note ? note->message : "";
  client.finishedMs = modifiedMsOf(folder.finished(host)).value_or(0);
}

bool RunWatch::isPlanWanting() const {
  if (!seen.publishedMs) return true;
  return !seen.awaited.empty() && fileStatus(seen.awaited.c_str());
}

void RunWatch::readPlan() {
  seen.publishedMs = modifiedMsOf(folder.settings());
  if (!seen.publishedMs) return;
  // One host: what all of them come to is a matter of counting.
  plan = makePlan({{folder.settings()}, {"host"}, 0, {}}, std::cin);
  const DatedTables dated(plan);
  seen.rowsPerClient = totalsOf(plan).rowsPerClient - dated.lostRowsPerClient();
  seen.uncounted.assign(dated.lost().begin(), dated.lost().end());
  seen.awaited.clear();
  seen.markersPerClient = 0;
  for (const PlannedFile& file : plan.files) {
    if (!file.exists) seen.awaited = file.path;
    if (leavesMarker(file)) ++seen.markersPerClient;
  }
  owners = RowOwners(plan);
  seen.knowsOwners = owners.knowAll();
  takeNotes();
  forgetOthers();
  const StartWindow window = windowFrom(*seen.publishedMs, clocks);
  seen.startMs = window.startMs - clocks.slowestMs;
  readPhase();
  clientsOfTables = SIZE_MAX;
}

// The last one that is published, which has a start of its own.
void RunWatch::readPhase() {
  int last = 1;
  while (fileStatus(folder.settings(last + 1).c_str())) ++last;
  const auto published = modifiedMsOf(folder.settings(last));
  if (last == 1 || !published) return;
  seen.phaseStartMs = windowFrom(*published, clocks).startMs - clocks.slowestMs;
  const Plan phase = makePlan({{folder.settings(last)}, {"host"}, 0, {}}, std::cin);
  const std::int64_t rows = totalsOf(phase).rowsPerClient - DatedTables(phase).lostRowsPerClient();
  seen.rowsBeforePhase = std::max<std::int64_t>(seen.rowsPerClient - rows, 0);
}

void RunWatch::takeNotes() {
  for (int phase = 1;; ++phase) {
    const auto note = publishedNoteFrom(textIn(folder.published(phase)));
    if (!note) return;
    takeNote(*note);
  }
}

void RunWatch::takeNote(const PublishedNote& note) {
  for (const std::string& host : note.hosts) {
    invited.insert(host);
    (void)indexOf(host);
  }
  if (note.phase == 1) clocks = note.clocks;
  for (const auto& [table, bytes] : note.tables) {
    // Of a table that is written to in several phases the first size counts.
    tables.startBehind(table.starts_with('/') ? table : folder.file(table), bytes);
  }
}

bool RunWatch::takesPart(const WatchedClient& client) const {
  if (invited.contains(client.host)) return true;
  const std::int64_t published = *seen.publishedMs;
  // Its ready file may have gone since the folder was read: it has ended.
  if (const auto touched = modifiedMsOf(folder.ready(client.host)))
    return *touched >= published - kGoneSeconds * kMsOfSecond;
  return modifiedMsOf(folder.finished(client.host)).value_or(0) >= published;
}

void RunWatch::forgetOthers() {
  std::erase_if(seen.clients, [this](const WatchedClient& each) { return !takesPart(each); });
  indices.clear();
  for (std::size_t i = 0; i < seen.clients.size(); ++i) indices.emplace(seen.clients[i].host, i);
}

void RunWatch::addTables() {
  clientsOfTables = seen.clients.size();
  plan.hosts.clear();
  for (const WatchedClient& client : seen.clients) plan.hosts.push_back(client.host);
  tables.add(plan, seen.publishedMs.value_or(0));
}

void RunWatch::readMarkers(const PlannedFile& file) {
  const std::string marker = markerOf(file, "");
  const std::string doneFolder = fs::path(marker).parent_path().string();
  const std::string front = doneFolder + "/";
  for (const std::string& name : folders.of(doneFolder).names) {
    if (!name.starts_with(kDonePrefix)) continue;
    const std::string path = front + name;
    if (!freshMarkers.contains(path)) {
      // One of an earlier run may be written anew at any time: it is asked again.
      const auto changed = modifiedMsOf(path);
      if (!changed || *changed < *seen.publishedMs) continue;
      freshMarkers.insert(path);
    }
    const auto known = indices.find(name.substr(kDonePrefix.size()));
    if (known != indices.end()) ++seen.clients[known->second].markers;
  }
}

void RunWatch::readTouches(std::size_t most) {
  inTurn(seen.clients.size(), most, nextReady, [this](std::size_t i) {
    WatchedClient& client = seen.clients[i];
    if (!readyHosts.contains(client.host)) return;
    client.touchedMs = modifiedMsOf(folder.ready(client.host));
    client.askedMs = seen.nowMs;
  });
}

void RunWatch::followTables(std::size_t most) {
  tables.follow(most, folders,
                [this](const RowCells& cells, const std::string& table) { takeRow(cells, table); });
  if (tables.lastRowMs() > 0) seen.lastRowMs = tables.lastRowMs();
}

void RunWatch::takeRow(const RowCells& cells, const std::string& table) {
  ++seen.rows;
  const std::string_view owner = owners.ownerOf(cells.source, cells.dest, table);
  const auto known = indices.find(std::string(owner));
  if (known == indices.end()) return;
  WatchedClient& client = seen.clients[known->second];
  ++client.rows;
  if (!client.firstRowSeenMs) client.firstRowSeenMs = seen.nowMs;
}

std::size_t RunWatch::indexOf(const std::string& host) {
  const auto known = indices.find(host);
  if (known != indices.end()) return known->second;
  const std::size_t at = seen.clients.size();
  seen.clients.emplace_back().host = host;
  indices.emplace(host, at);
  return at;
}

void RunWatch::takeStock() {
  const auto known = static_cast<std::int64_t>(seen.clients.size());
  seen.namelessClients = std::max<std::int64_t>(wantedClients - known, 0);
  for (WatchedClient& client : seen.clients) client.hasReadyFile = readyHosts.contains(client.host);
  judgeClients(seen);
}

}  // namespace marrowbench::ctl
