#include "marrowctl/table/client_runs.h"

#include <algorithm>

namespace marrowbench::ctl {

bool ClientRuns::canBe(const Client& client, std::uint32_t test, std::int32_t iteration) const {
  if (test < client.test) return false;
  const auto last = client.lastIterations.find(test);
  const std::int32_t before = last == client.lastIterations.end() ? -1 : last->second;
  if (iteration >= 0) return iteration > before;
  return before + 1 < tests[test].parameters.iterations;
}

RowPlace ClientRuns::placeOf(std::uint32_t host, const LineNumbers& lines,
                             std::int32_t iteration) const {
  const auto known = clients.find(host);
  const Client& client = known == clients.end() ? newClient : known->second;
  for (const std::uint32_t line : lines) {
    if (!canBe(client, line, iteration)) continue;
    const auto last = client.lastIterations.find(line);
    const std::int32_t before = last == client.lastIterations.end() ? -1 : last->second;
    return {line, iteration >= 0 ? iteration : before + 1, client.run};
  }
  return {lines.front(), std::max(iteration, 0), client.run + 1};
}

RowPlace ClientRuns::next(std::uint32_t host, const LineNumbers& lines, std::int32_t iteration) {
  const RowPlace place = placeOf(host, lines, iteration);
  Client& client = clients[host];
  if (client.run != place.run) client = {place.run, 0, {}};
  client.test = place.test;
  client.lastIterations[place.test] = place.iteration;
  return place;
}

void RunNumbers::Span::widen(const Span& more) {
  begin = std::min(begin, more.begin);
  end = std::max(end, more.end);
}

double RunNumbers::Span::shared(const Span& other) const {
  return std::min(end, other.end) - std::max(begin, other.begin);
}

void RunNumbers::add(std::uint32_t host, std::uint32_t run, double start, double end) {
  std::vector<Span>& runs = ofClients[host];
  if (runs.size() <= run) runs.resize(run + 1);
  runs[run].widen({start, end});
}

void RunNumbers::finish() {
  std::size_t most = 0;
  for (const auto& [host, runs] : ofClients) most = std::max(most, runs.size());
  spans.resize(most);
  for (const auto& [host, runs] : ofClients) {
    for (std::size_t i = 0; i < most && runs.size() == most; ++i) spans[i].widen(runs[i]);
  }
}

std::uint32_t RunNumbers::numberOf(std::uint32_t host, std::uint32_t run) const {
  const std::vector<Span>& runs = ofClients.at(host);
  if (runs.size() == spans.size()) return run;
  const auto next = std::max_element(spans.begin(), spans.end(), [&](const Span& a, const Span& b) {
    return a.shared(runs[run]) < b.shared(runs[run]);
  });
  return static_cast<std::uint32_t>(std::distance(spans.begin(), next));
}

}  // namespace marrowbench::ctl
