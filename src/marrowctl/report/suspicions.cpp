#include "marrowctl/report/suspicions.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

#include "marrowctl/report/completeness.h"
#include "marrowctl/report/statistics.h"
#include "marrowctl/report/text_parts.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr double kBytesOfMib = 1048576;
constexpr double kCacheRatio = 3;
constexpr double kFirstRatio = 1.5;
constexpr double kLateSeconds = 60;

class Suspicions {
 public:
  Suspicions(const Report& judged, const std::vector<FirstIteration>& medians,
             std::optional<double> linkBytesPerSecond)
      : report(judged), set(judged.results), firsts(medians) {
    if (linkBytesPerSecond) link = *linkBytesPerSecond / kBytesOfMib;
  }

  std::vector<Suspicion> find() {
    for (std::uint32_t i = 0; i < report.tests.size(); ++i) {
      if (!report.tests[i].mibPerSecond) continue;
      const TestType type = set.tests[i].parameters.type;
      if (type == TestType::read) lookForCache(i);
      if (type == TestType::write && link) lookForImpossible(i);
      lookAtFirst(i);
      lookForLate(i);
    }
    lookForLocks();
    if (!report.clients.missing.empty()) addMissing();
    return std::move(found);
  }

 private:
  [[nodiscard]] std::vector<std::string> fasterThan(std::uint32_t test, double limit) const {
    std::vector<std::string> hosts;
    for (const ClientReport& client : report.tests[test].clients) {
      if (client.mibPerSecond && client.mibPerSecond->median > limit)
        hosts.push_back(set.hosts[client.host]);
    }
    return hosts;
  }

  // The median of the tests that wrote the file that this one reads.
  [[nodiscard]] std::optional<double> writeMedian(std::uint32_t readTest) const {
    std::optional<double> fastest;
    for (std::size_t i = 0; i < set.tests.size(); ++i) {
      const bool isWrite = set.tests[i].parameters.type == TestType::write &&
                           set.tests[i].dest == set.tests[readTest].source;
      if (!isWrite || !report.tests[i].mibPerSecond) continue;
      fastest = std::max(fastest.value_or(0), report.tests[i].mibPerSecond->median);
    }
    return fastest;
  }

  void lookForCache(std::uint32_t test) {
    constexpr const char* kRemedy =
        "let each client read what another one wrote (marrowctl sweep --neighbour), or files "
        "larger "
        "than its memory, or mount the share anew between writing and reading";
    if (link) {
      const std::vector<std::string> hosts = fasterThan(test, *link);
      if (!hosts.empty()) {
        add("client-cache", test, hosts,
            fmt::format("read faster than the link's {} MiB/s: the data came from the memory of "
                        "the client, not from the server",
                        shownSpeed(*link)),
            kRemedy);
        return;
      }
    }
    const std::optional<double> write = writeMedian(test);
    if (!write) return;
    const std::vector<std::string> hosts = fasterThan(test, kCacheRatio * *write);
    if (hosts.empty()) return;
    add("client-cache", test, hosts,
        fmt::format("read at {} MiB/s what was written at {} MiB/s: more than three times as "
                    "fast, probably from the memory of the client",
                    shownSpeed(report.tests[test].mibPerSecond->median), shownSpeed(*write)),
        kRemedy);
  }

  void lookForImpossible(std::uint32_t test) {
    const std::vector<std::string> hosts = fasterThan(test, *link);
    if (hosts.empty()) return;
    add("impossible-rate", test, hosts,
        fmt::format("written faster than the link's {} MiB/s: the data was still in the memory "
                    "of the client when the clock stopped",
                    shownSpeed(*link)),
        "write files that are larger than the memory of the client, and look whether the share is "
        "mounted at all");
  }

  void lookAtFirst(std::uint32_t test) {
    const auto [first, later] = firsts[test];
    if (first == 0 || later == 0) return;
    const double ratio = first / later;
    if (ratio < kFirstRatio && ratio > 1 / kFirstRatio) return;
    add("first-iteration", test, {},
        fmt::format("the first iteration ran at {} MiB/s, the later ones at {}: they do not "
                    "measure the same",
                    shownSpeed(first), shownSpeed(later)),
        ratio > 1
            ? "the first one may have filled a cache that was full later: judge by the later "
              "ones, and use more iterations"
            : "the first one may have opened connections or filled caches: judge by the later "
              "ones, or by the first alone if a cold start is what counts");
  }

  void lookForLate(std::uint32_t test) {
    std::vector<double> starts;
    for (const ClientReport& client : report.tests[test].clients) {
      if (client.mibPerSecond) starts.push_back(client.firstStart);
    }
    if (starts.size() < 2) return;
    const double middle = median(starts);
    std::vector<std::string> late;
    double most = 0;
    for (const ClientReport& client : report.tests[test].clients) {
      const double by = client.firstStart - middle;
      if (!client.mibPerSecond || by < kLateSeconds) continue;
      late.push_back(set.hosts[client.host]);
      most = std::max(most, by);
    }
    if (late.empty()) return;
    add("late-start", test, late,
        fmt::format("began up to {:.0f} s after the median of the clients", most),
        "start the clients first and put the settings file there afterwards: they wait for it and "
        "begin together; look at the clock of a client that is late by a whole number of minutes");
  }

  void lookForLocks() {
    for (const ResultFile& file : set.files) {
      if (!file.hasLockBeside) continue;
      add("lock-left", kNone, {},
          printable(file.path) +
              "_lock.txt is there: a client is appending this moment, or was "
              "killed while it did, and others lose rows until it is gone",
          "make sure that no client is running, then remove it: \"marrowctl fleet unlock\" does");
    }
  }

  void addMissing() {
    add("missing-hosts", kNone, report.clients.missing, "no row of these clients is in the tables",
        "look at what they printed and at their logs; a client that never saw the settings file "
        "waits for it still");
  }

  void add(std::string_view name, std::uint32_t test, std::vector<std::string> hosts,
           std::string message, std::string remedy) {
    found.push_back({name, test, std::move(hosts), std::move(message), std::move(remedy)});
  }

  const Report& report;
  const ResultSet& set;
  const std::vector<FirstIteration>& firsts;
  std::optional<double> link;  // MiB/s
  std::vector<Suspicion> found;
};

}  // namespace

std::vector<Suspicion> suspicionsOf(const Report& report, const std::vector<FirstIteration>& firsts,
                                    std::optional<double> linkBytesPerSecond) {
  return Suspicions(report, firsts, linkBytesPerSecond).find();
}

}  // namespace marrowbench::ctl
