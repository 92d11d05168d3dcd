#include "marrowctl/table/activity.h"

#include <algorithm>
#include <vector>

namespace marrowbench::ctl {
namespace {

// Dates are known to a second.
constexpr double kUnsureSeconds = 2;
constexpr double kUnsureShare = 1.02;

bool hasLetter(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
}

bool exceeds(double busySeconds, double spanSeconds) {
  return busySeconds > spanSeconds * kUnsureShare + kUnsureSeconds;
}

std::vector<Activity> inOrder(const Activities& activities) {
  std::vector<Activity> sorted;
  for (const auto& [name, activity] : activities) sorted.push_back(activity);
  std::sort(sorted.begin(), sorted.end(),
            [](const Activity& a, const Activity& b) { return a.firstStart < b.firstStart; });
  return sorted;
}

}  // namespace

void Activity::add(const Site& site) {
  firstStart = rows == 0 ? site.firstStart : std::min(firstStart, site.firstStart);
  lastEnd = std::max(lastEnd, static_cast<double>(site.lastEnd));
  busySeconds += site.busySeconds;
  rows += site.rows;
}

bool Activity::canBeOneClient() const { return !exceeds(busySeconds, lastEnd - firstStart); }

bool canBeClients(const Activities& activities, bool mixed) {
  const bool areSingle = std::all_of(activities.begin(), activities.end(),
                                     [](const auto& each) { return each.second.canBeOneClient(); });
  if (!areSingle || activities.size() < 2) return false;
  if (mixed) return true;

  const std::vector<Activity> sorted = inOrder(activities);
  double busy = 0, covered = 0, overlap = 0, shortestGap = sorted[1].firstStart - sorted[0].lastEnd;
  double until = sorted.front().firstStart;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const Activity& each = sorted[i];
    busy += each.busySeconds;
    if (i > 0) {
      overlap = std::max(overlap, std::min(until, each.lastEnd) - each.firstStart);
      shortestGap = std::min(shortestGap, each.firstStart - until);
    }
    covered += std::max(0.0, each.lastEnd - std::max(until, each.firstStart));
    until = std::max(until, each.lastEnd);
  }
  if (exceeds(busy, covered)) return true;
  // Nothing ran at the same time. What takes turns, or goes on where the other one stopped, is one
  // client; of short rows nobody knows, and names of clients have letters.
  const bool isShort = until - sorted.front().firstStart <= kUnsureSeconds * 2;
  if (isShort) {
    return std::all_of(activities.begin(), activities.end(),
                       [](const auto& each) { return hasLetter(each.first); });
  }
  return overlap <= kUnsureSeconds && shortestGap > kUnsureSeconds;
}

}  // namespace marrowbench::ctl
