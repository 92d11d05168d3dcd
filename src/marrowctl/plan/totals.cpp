#include "marrowctl/plan/totals.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "fileaccess/run_stats.h"
#include "marrowctl/plan/client_paths.h"
#include "marrowctl/plan/done_markers.h"
#include "marrowctl/plan/expansion.h"
#include "marrowctl/plan/file_sizes.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kTableField = 12;
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
// So many files are looked at one by one; if all of them exist, those behind them do, too.
constexpr std::int64_t kLookedAt = 1000;

// Sizes, iterations and clients of a settings file can pass what 64 bits hold. None is negative.
std::int64_t product(std::int64_t a, std::int64_t b) {
  return a != 0 && b > kMost / a ? kMost : a * b;
}

void add(std::int64_t& sum, std::int64_t value) { sum = value > kMost - sum ? kMost : sum + value; }

bool movesData(const PlannedTest& test) {
  const bool runsNothing = test.method == Method::system || test.method == Method::winApi;
  return test.isRun && test.iterations > 0 && !runsNothing;
}

// As the program sees the size of a file that it reads: in 32 bits.
std::int64_t readSize(std::int64_t size) {
  return std::clamp(static_cast<std::int32_t>(size), 0, kMaxFileSize);
}

// A read or write of nothing takes one chunk, a copy of nothing takes none.
std::int64_t pauseOf(const PlannedTest& test, std::int64_t bytes) {
  const std::int64_t chunk = test.used.chunkSize;
  if (chunk <= 0 || (test.type == TestType::copy && bytes == 0)) return 0;
  const std::int64_t chunks = std::max<std::int64_t>(1, (bytes - 1) / chunk + 1);
  return product(chunks, std::max(test.used.chunkWait, 0));
}

// Descriptors open a file as it is; only one that is preallocated is cut to its new size.
bool keepsEnd(const PlannedTest& test) {
  return test.method == Method::posix && !test.used.prealloc;
}

// A copy of an empty file makes no file.
bool isNothingCopied(const PlannedTest& test, const std::vector<SizedFiles>& files) {
  return test.type == TestType::copy &&
         std::all_of(files.begin(), files.end(),
                     [](const SizedFiles& part) { return part.size == 0; });
}

class Count {
 public:
  explicit Count(const Plan& countedPlan)
      : plan(countedPlan),
        clients(plan.hosts.begin(), plan.hosts.end()),
        pauseMs(plan.hosts.size()) {}

  Totals totals() {
    sums.clients = plan.clients;
    for (const PlannedFile& file : plan.files) countFile(file);
    sums.rows = product(sums.rowsPerClient, plan.clients);
    sums.bytesRead = forTheFleet(sums.bytesRead);
    sums.bytesWritten = forTheFleet(sums.bytesWritten);
    sums.pauseMs = pauseMs.empty() ? 0 : *std::max_element(pauseMs.begin(), pauseMs.end());
    sums.pauseSeconds = sums.pauseMs / 1000 + (sums.pauseMs % 1000 != 0 ? 1 : 0);
    for (const auto& [name, family] : sizes.families()) countLeft(name, family);
    return std::move(sums);
  }

 private:
  void countFile(const PlannedFile& file) {
    for (const PlannedLine& line : file.lines) {
      if (line.kind != LineKind::test) continue;
      sums.movedByTest.push_back(0);
      sums.pauseMsByTest.push_back(0);
      const bool hasTable = !line.fields[kTableField].text.empty();
      if (hasTable && line.test.isRun) add(sums.rowsPerClient, std::max(line.test.iterations, 0));
      if (movesData(line.test)) countTest(file, line.test);
      ++testIndex;
    }
    if (!leavesMarker(file)) return;
    for (const std::string& host : plan.hosts) sums.markers.push_back(markerOf(file, host));
  }

  // All clients run the line at the same time: none of them finds what another writes by it.
  void countTest(const PlannedFile& file, const PlannedTest& test) {
    std::vector<std::pair<std::string, std::vector<SizedFiles>>> destinations;
    for (std::size_t host = 0; host < clients.size(); ++host) {
      std::vector<SizedFiles> files = filesOf(file, test, clients[host]);
      for (const SizedFiles& part : files) countFiles(test, part, host);
      if (test.type == TestType::read) continue;
      destinations.emplace_back(clients[host].family(file, test, test.patterns.dest),
                                std::move(files));
    }
    const Writing how{holds(test.dest, "[host]"), keepsEnd(test)};
    for (auto& [path, files] : destinations) {
      if (!isNothingCopied(test, files)) sizes.write(path, std::move(files), how);
    }
  }

  std::vector<SizedFiles> filesOf(const PlannedFile& file, const PlannedTest& test,
                                  const ClientPaths& client) {
    if (test.type == TestType::write) {
      return {{test.iterations, std::max(test.used.fileSize, 0)}};
    }
    // By the time of the reading it has another name.
    if (test.patterns.source.has(kDateMark)) return {{test.iterations, kUnknownSize}};
    return sizes.sizesOf(client.family(file, test, test.patterns.source), test.iterations);
  }

  void countFiles(const PlannedTest& test, const SizedFiles& files, std::size_t host) {
    std::int64_t& moved = sums.movedByTest.back();
    if (files.size == kUnknownSize) {
      if (host == 0) moved = kUnknownSize;
      const bool isNoted = !sums.unknownSizes.empty() && sums.unknownSizes.back() == testIndex;
      if (!isNoted) sums.unknownSizes.push_back(testIndex);
      return;
    }
    const std::int64_t size = test.type == TestType::read ? readSize(files.size) : files.size;
    const std::int64_t bytes = product(size, files.count);
    if (host == 0 && moved != kUnknownSize) add(moved, bytes);
    if (test.type != TestType::write) add(sums.bytesRead, bytes);
    if (test.type != TestType::read) add(sums.bytesWritten, bytes);
    if (test.type != TestType::copy) sums.memoryBytes = std::max(sums.memoryBytes, size);
    const std::int64_t pauses = product(pauseOf(test, size), files.count);
    add(pauseMs[host], pauses);
    if (host == 0) add(sums.pauseMsByTest.back(), pauses);
  }

  void countLeft(const std::string& name, const FileFamily& family) {
    if (sizes.isInFamily(name)) return;
    std::int64_t count = 0;
    std::int64_t here = filesHere(name, family);
    std::int64_t bytes = 0;  // of the others
    for (const SizedFiles& files : family.files) {
      add(count, files.count);
      const std::int64_t known = std::min(here, files.count);
      here -= known;
      if (files.size != kUnknownSize) add(bytes, product(files.size, files.count - known));
    }
    add(sums.filesLeft, family.isPerHost ? forTheFleet(count) : count);
    if (bytes == 0) return;
    const std::string first = filledIn(family.path, {{}, "0", {}});
    const std::string folder(parentFolder(first.c_str()));
    add(sums.spaceByFolder[folder], family.isPerHost ? forTheFleet(bytes) : bytes);
  }

  // How many of a family an earlier run has left here, from the first iteration on.
  std::int64_t filesHere(const std::string& name, const FileFamily& family) {
    std::int64_t count = 0;
    for (const SizedFiles& files : family.files) add(count, files.count);
    for (std::int64_t i = 0; i < std::min(count, kLookedAt); ++i) {
      if (sizes.sizeHere(filledIn(name, {{}, std::to_string(i), {}})) == kUnknownSize) return i;
    }
    return count;
  }

  // What the named hosts come to, for all clients of the fleet.
  std::int64_t forTheFleet(std::int64_t sum) const {
    const std::int64_t hosts = std::max<std::int64_t>(1, std::ssize(plan.hosts));
    if (sum <= kMost / plan.clients) return sum * plan.clients / hosts;
    return product(sum / hosts, plan.clients);
  }

  const Plan& plan;
  const std::vector<ClientPaths> clients;  // the named ones
  std::vector<std::int64_t> pauseMs;       // of each host
  FileSizes sizes;
  Totals sums;
  int testIndex = 0;
};

}  // namespace

Totals totalsOf(const Plan& plan) { return Count(plan).totals(); }

}  // namespace marrowbench::ctl
