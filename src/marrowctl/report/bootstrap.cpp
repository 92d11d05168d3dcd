#include "marrowctl/report/bootstrap.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "marrowctl/report/statistics.h"

namespace marrowbench::ctl {
namespace {

constexpr int kDraws = 2000;
constexpr double kTail = 0.025;

// The library's distributions give other numbers with other libraries.
class Draw {
 public:
  // SplitMix64 (Steele, Lea and Flood, 2014), scaled by its high half.
  std::uint32_t below(std::uint32_t bound) {
    state += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state;
    mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EBU;
    mixed ^= mixed >> 31U;
    return static_cast<std::uint32_t>((mixed >> 32U) * bound >> 32U);
  }

 private:
  std::uint64_t state = 20261121;
};

// Rows in the order of their speeds, which are drawn with their clients or one by one.
class Side {
 public:
  Side(std::vector<ClientSpeed> rows, std::uint32_t clientCount, bool drawsClients)
      : sorted(std::move(rows)), weights(drawsClients ? clientCount : sorted.size()) {
    std::sort(sorted.begin(), sorted.end(),
              [](const ClientSpeed& a, const ClientSpeed& b) { return a.speed < b.speed; });
    for (std::uint32_t i = 0; !drawsClients && i < sorted.size(); ++i) sorted[i].client = i;
  }

  double drawnMedian(Draw& draw) {
    std::fill(weights.begin(), weights.end(), 0);
    const auto count = static_cast<std::uint32_t>(weights.size());
    for (std::uint32_t i = 0; i < count; ++i) ++weights[draw.below(count)];
    std::uint64_t rows = 0;
    for (const ClientSpeed& row : sorted) rows += weights[row.client];
    // Below and above the middle; the same row where their number is odd.
    const double lower = atRank((rows - 1) / 2);
    return rows % 2 == 1 ? lower : (lower + atRank(rows / 2)) / 2;
  }

 private:
  [[nodiscard]] double atRank(std::uint64_t rank) const {
    std::uint64_t seen = 0;
    for (const ClientSpeed& row : sorted) {
      seen += weights[row.client];
      if (seen > rank) return row.speed;
    }
    return sorted.back().speed;
  }

  std::vector<ClientSpeed> sorted;
  std::vector<std::uint32_t> weights;  // how often each was drawn
};

std::uint32_t clientsOf(const std::vector<ClientSpeed>& rows) {
  std::vector<std::uint32_t> clients;
  clients.reserve(rows.size());
  for (const ClientSpeed& row : rows) clients.push_back(row.client);
  std::sort(clients.begin(), clients.end());
  clients.erase(std::unique(clients.begin(), clients.end()), clients.end());
  return static_cast<std::uint32_t>(clients.size());
}

}  // namespace

Interval ratioInterval(std::vector<ClientSpeed> before, std::vector<ClientSpeed> after) {
  const std::uint32_t clientsBefore = clientsOf(before), clientsAfter = clientsOf(after);
  const bool drawsClients = std::min(clientsBefore, clientsAfter) >= kClientsToDraw;
  Side old(std::move(before), clientsBefore, drawsClients);
  Side recent(std::move(after), clientsAfter, drawsClients);
  Draw draw;
  std::vector<double> ratios;
  for (int i = 0; i < kDraws; ++i) {
    const double from = old.drawnMedian(draw);
    ratios.push_back(recent.drawnMedian(draw) / from);
  }
  return {quantile(ratios, kTail), quantile(ratios, 1 - kTail)};
}

}  // namespace marrowbench::ctl
