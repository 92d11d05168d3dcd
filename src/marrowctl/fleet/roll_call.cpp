#include "marrowctl/fleet/roll_call.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>

#include "marrowctl/fleet/folder_names.h"
#include "marrowctl/fleet/open_file.h"
#include "marrowctl/fleet/ready_file.h"
#include "marrowctl/report/completeness.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMsOfSecond = 1000;
constexpr std::int64_t kAllowedMs = 1000;

void take(const std::string& path, std::string host, const ShareTime& share, Roll& roll) {
  const auto seen = seeReadyFile(path);
  // Deleted since the folder was read: the client has stopped.
  if (!seen) return;
  const std::int64_t age = std::max<std::int64_t>(share.nowMs() - seen->modifiedMs, 0);
  PresentClient client{std::move(host), age, seen->note.value_or(ReadyNote{})};
  if (age >= kGoneSeconds * kMsOfSecond) {
    roll.gone.push_back(std::move(client));
  } else if (!client.note.marrowbench || !client.note.clockOffsetMs) {
    roll.starting.push_back(std::move(client.host));
  } else {
    roll.ready.push_back(std::move(client));
  }
}

std::set<std::string> hostsIn(const std::vector<PresentClient>& clients) {
  std::set<std::string> hosts;
  for (const PresentClient& client : clients) hosts.insert(client.host);
  return hosts;
}

std::vector<std::int64_t> offsetsOf(const Roll& roll) {
  std::vector<std::int64_t> offsets;
  for (const PresentClient& client : roll.ready)
    offsets.push_back(client.note.clockOffsetMs.value_or(0));
  std::sort(offsets.begin(), offsets.end());
  return offsets;
}

std::string names(const std::vector<std::string>& hosts) { return shownNames(hosts, 20); }

// Why clients that were armed are no more, those that ended for one reason together.
void addEnded(const Roll& roll, const Wanted& wanted, std::vector<std::string>& sentences) {
  const std::set<std::string> invited(wanted.hosts.begin(), wanted.hosts.end());
  std::map<std::string, std::vector<std::string>> byReason;
  for (const FinishedNote& note : roll.ended) {
    if (!invited.empty() && !invited.contains(note.host)) continue;
    byReason[note.message.empty() ? fmt::format("exit status {}", note.status) : note.message]
        .push_back(note.host);
  }
  for (const auto& [reason, hosts] : byReason)
    sentences.push_back(fmt::format("armed before, and ended: {}: {}", names(hosts), reason));
}

// All of them where nobody is named.
std::vector<std::string> wantedAmong(std::vector<std::string> hosts, const Wanted& wanted) {
  const std::set<std::string> invited(wanted.hosts.begin(), wanted.hosts.end());
  if (!invited.empty())
    std::erase_if(hosts, [&](const std::string& host) { return !invited.contains(host); });
  return hosts;
}

}  // namespace

std::vector<std::string> Roll::readyHosts() const {
  std::vector<std::string> hosts;
  std::transform(ready.begin(), ready.end(), std::back_inserter(hosts),
                 [](const PresentClient& client) { return client.host; });
  return hosts;
}

int callRoll(const ControlFolder& folder, const ShareTime& share, Roll& roll) {
  std::set<std::string> present;
  std::set<std::string> finished;
  const int code = forEachName(folder.path(), [&](const std::string& name) {
    if (name.starts_with(kReadyPrefix)) present.insert(name.substr(kReadyPrefix.size()));
    if (name.starts_with(kFinishedPrefix)) finished.insert(name.substr(kFinishedPrefix.size()));
  });
  if (code != 0 && code != ENOENT) return code;
  for (const std::string& host : present) take(folder.ready(host), host, share, roll);
  for (const std::string& host : finished) {
    if (present.contains(host)) continue;
    if (auto note = finishedNoteFrom(textIn(folder.finished(host)))) {
      note->host = host;
      roll.ended.push_back(*std::move(note));
    }
  }
  return 0;
}

std::vector<std::string> absences(const Roll& roll, const Wanted& wanted) {
  std::vector<std::string> sentences;
  const std::vector<std::string> present = wantedAmong(roll.readyHosts(), wanted);
  const auto found = static_cast<std::int64_t>(present.size());
  const auto named = static_cast<std::int64_t>(wanted.hosts.size());
  const std::int64_t all = std::max({wanted.clients, named, std::int64_t{1}});
  const std::set<std::string> ready = hostsIn(roll.ready);
  std::set<std::string> others = hostsIn(roll.gone);
  others.insert(roll.starting.begin(), roll.starting.end());
  std::vector<std::string> missing;
  bool isEveryoneReady = true;
  for (const std::string& host : wanted.hosts) {
    if (ready.contains(host)) continue;
    isEveryoneReady = false;
    if (!others.contains(host)) missing.push_back(host);
  }
  if (found >= all && isEveryoneReady) return sentences;
  const std::string some = found == 0
                               ? "no client is ready"
                               : fmt::format("{} of {} clients are ready: {}", shownCount(found),
                                             shownCount(all), names(present));
  sentences.push_back(some);
  if (!missing.empty()) {
    sentences.push_back(
        fmt::format("missing: {}. \"marrowctl fleet arm\" makes a machine ready", names(missing)));
  }
  for (const PresentClient& client : roll.gone) {
    sentences.push_back(fmt::format(
        "{} is gone: nobody has touched its ready file for {} (process {}, armed at {})",
        client.host, shownDuration(client.ageMs / kMsOfSecond), client.note.pid, client.note.time));
  }
  addEnded(roll, wanted, sentences);
  if (!roll.starting.empty()) {
    sentences.push_back(
        fmt::format("about to be ready, in a few seconds: {}", names(roll.starting)));
  }
  return sentences;
}

std::vector<std::string> uninvited(const Roll& roll, const Wanted& wanted) {
  std::vector<std::string> hosts;
  if (wanted.hosts.empty()) return hosts;
  const std::set<std::string> invited(wanted.hosts.begin(), wanted.hosts.end());
  for (const PresentClient& client : roll.ready) {
    if (!invited.contains(client.host)) hosts.push_back(client.host);
  }
  return hosts;
}

ClockSpan clocksOf(const Roll& roll) {
  const std::vector<std::int64_t> offsets = offsetsOf(roll);
  return {offsets.front(), offsets.back()};
}

std::vector<std::string> wrongClocks(const Roll& roll, std::int64_t rounding) {
  std::vector<std::string> sentences;
  if (roll.ready.empty()) return sentences;
  const std::vector<std::int64_t> offsets = offsetsOf(roll);
  const std::int64_t allowed = kAllowedMs + rounding;
  if (offsets.back() - offsets.front() <= allowed) return sentences;
  const std::int64_t middle = offsets[(offsets.size() - 1) / 2];
  for (const PresentClient& client : roll.ready) {
    const std::int64_t off = client.note.clockOffsetMs.value_or(0) - middle;
    if (std::llabs(off) <= allowed / 2) continue;
    sentences.push_back(fmt::format("the clock of {} is {:.1f} s {} the others'", client.host,
                                    static_cast<double>(std::llabs(off)) / kMsOfSecond,
                                    off > 0 ? "ahead of" : "behind"));
  }
  return sentences;
}

}  // namespace marrowbench::ctl
