#include <algorithm>

#include "marrowctl/table/assignment.h"
#include "marrowctl/table/client_order.h"
#include "marrowctl/table/client_runs.h"
#include "marrowctl/table/test_names.h"

namespace marrowbench::ctl {
namespace {

class SettingsAssignment {
 public:
  SettingsAssignment(ResultSet& resultSet, const std::vector<Site>& allSites,
                     const SettingsTests& settings, const std::vector<LineNumbers>& linesOfSites,
                     bool takesAllRuns)
      : set(resultSet), sites(allSites), lines(linesOfSites), allRuns(takesAllRuns) {
    set.knowsSettings = true;
    set.tests = settings.tests();
  }

  void run() {
    hosts = takeHosts(set, sites);
    order = clientOrder(set, sites, hosts, lines);
    ClientRuns runs(set.tests);
    forEachRow([this, &runs](const StoredRow& row, std::uint32_t site, std::uint32_t host) {
      if (!lines[site].empty()) {
        const RowPlace place = runs.next(host, lines[site], row.iteration);
        numbers.add(host, place.run, row.end - row.milliseconds / 1000.0, row.end);
      }
    });
    numbers.finish();
    set.runs.found = std::max<std::int64_t>(1, numbers.count());
    set.runs.judged = allRuns ? set.runs.found : 1;
    takeOtherTests();
    assignRows();
  }

 private:
  template <class Visit>
  void forEachRow(Visit visit) {
    for (std::uint64_t i = 0; i < set.store.size(); ++i) {
      StoredRow& row = set.store.at(order.empty() ? i : order[i]);
      const std::uint32_t site = row.series;
      visit(row, site, hosts[site]);
    }
  }

  // Of rows that fit no line: those of the newest run.
  void takeOtherTests() {
    std::vector<Site> others;
    for (std::size_t i = 0; i < sites.size(); ++i)
      others.push_back(lines[i].empty() ? sites[i] : Site{});
    othersFrom = allRuns ? 0 : numbers.newestBegin();
    otherTests = takeTests(set, others, othersFrom);
    nameTests(set.tests);
  }

  void assignRows() {
    const auto lineTests = set.tests;
    ClientRuns runs(lineTests);
    SeriesMaker maker(set.series);
    forEachRow([&](StoredRow& row, std::uint32_t site, std::uint32_t host) {
      std::uint32_t test = kNone;
      bool counts = false;
      if (!lines[site].empty()) {
        const RowPlace place = runs.next(host, lines[site], row.iteration);
        test = place.test;
        row.iteration = place.iteration;
        counts = allRuns || numbers.numberOf(host, place.run) + 1 == numbers.count();
      } else {
        test = otherTests[site];
        counts = test != kNone && row.end >= othersFrom;
        row.iteration = std::max(row.iteration, 0);
      }
      row.series = counts ? maker.seriesOf(host, test) : kNone;
      if (!counts) return;
      row.flags |= isJudged;
      ++set.judgedRows;
    });
  }

  ResultSet& set;
  const std::vector<Site>& sites;
  const std::vector<LineNumbers>& lines;
  const bool allRuns;
  std::vector<std::uint32_t> hosts;
  std::vector<std::uint64_t> order;  // of the rows; empty: as they are stored
  std::vector<std::uint32_t> otherTests;
  double othersFrom = 0;
  RunNumbers numbers;
};

}  // namespace

void assignBySettings(ResultSet& set, const std::vector<Site>& sites, const SettingsTests& settings,
                      const std::vector<LineNumbers>& lines, const ReadOptions& options) {
  SettingsAssignment(set, sites, settings, lines, options.allRuns).run();
}

}  // namespace marrowbench::ctl
