#include "marrowctl/table/client_runs.h"

#include <algorithm>

namespace marrowbench::ctl {
namespace {

// Clocks of clients differ, and dates are known to a second.
constexpr double kClocksApart = 60;

}  // namespace

bool ClientRuns::canBe(const Client& client, std::uint32_t test, std::int32_t iteration) const {
  if (test < client.test) return false;
  const auto last = client.lastIterations.find(test);
  const std::int32_t before = last == client.lastIterations.end() ? -1 : last->second;
  if (iteration >= 0) return iteration > before;
  return before + 1 < tests[test].parameters.iterations;
}

RowPlace ClientRuns::next(std::uint32_t host, const LineNumbers& lines, std::int32_t iteration) {
  Client& client = clients[host];
  auto found = std::find_if(lines.begin(), lines.end(),
                            [&](std::uint32_t line) { return canBe(client, line, iteration); });
  if (found == lines.end()) {
    ++client.run;
    client.lastIterations.clear();
    found = lines.begin();
  }
  client.test = *found;
  std::int32_t& last = client.lastIterations.try_emplace(*found, -1).first->second;
  last = iteration >= 0 ? iteration : last + 1;
  return {*found, last, client.run};
}

void RunNumbers::add(std::uint32_t host, std::uint32_t run, double start) {
  std::vector<double>& ofHost = starts[host];
  if (ofHost.size() <= run) {
    ofHost.resize(run + 1, start);
  } else {
    ofHost[run] = std::min(ofHost[run], start);
  }
}

void RunNumbers::finish() {
  std::size_t most = 0;
  for (const auto& [host, runs] : starts) most = std::max(most, runs.size());
  for (const auto& [host, runs] : starts) {
    if (runs.size() != most) continue;
    if (begins.empty()) begins = runs;
    for (std::size_t i = 0; i < most; ++i) begins[i] = std::min(begins[i], runs[i]);
  }
}

std::uint32_t RunNumbers::numberOf(std::uint32_t host, std::uint32_t run) const {
  const std::vector<double>& runs = starts.at(host);
  if (runs.size() == begins.size()) return run;
  const double start = runs[run] + kClocksApart;
  const auto behind = std::upper_bound(begins.begin(), begins.end(), start);
  return behind == begins.begin()
             ? 0
             : static_cast<std::uint32_t>(std::distance(begins.begin(), behind)) - 1;
}

}  // namespace marrowbench::ctl
