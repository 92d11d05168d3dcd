#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "marrowctl/report/page/html_table.h"
#include "marrowctl/report/page/page_sections.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostClients = 100;
constexpr std::size_t kMostTests = 3;

// A client, and the tests in which it is far from the others.
struct Outsider {
  std::uint32_t host = 0;
  std::vector<std::uint32_t> tests;
  double least = 0, most = 0;  // times the others
};

std::vector<Outsider> outsidersOf(const Report& report) {
  std::vector<Outsider> byHost(report.results.hosts.size());
  for (std::uint32_t test = 0; test < report.tests.size(); ++test) {
    for (const Straggler& each : report.tests[test].stragglers) {
      Outsider& client = byHost[each.host];
      client.host = each.host;
      client.least = client.tests.empty() ? each.ratio : std::min(client.least, each.ratio);
      client.most = std::max(client.most, each.ratio);
      client.tests.push_back(test);
    }
  }
  std::erase_if(byHost, [](const Outsider& client) { return client.tests.empty(); });
  std::stable_sort(byHost.begin(), byHost.end(), [](const Outsider& a, const Outsider& b) {
    return a.tests.size() > b.tests.size();
  });
  return byHost;
}

std::string testsText(const Report& report, const Outsider& client) {
  std::string text;
  for (std::size_t i = 0; i < std::min(client.tests.size(), kMostTests); ++i) {
    text += (i == 0 ? "" : "; ") + report.results.tests[client.tests[i]].name;
  }
  if (client.tests.size() > kMostTests)
    text += fmt::format("; and {} more", client.tests.size() - kMostTests);
  return text;
}

}  // namespace

std::string stragglersHtml(const Report& report) {
  const std::vector<Outsider> clients = outsidersOf(report);
  if (clients.empty()) return "";
  HtmlTable table({{"Client", {}, true},
                   {"Tests"},
                   {"Least", "times the others"},
                   {"Most", "times the others"},
                   {"In", {}, true}});
  for (std::size_t i = 0; i < std::min(clients.size(), kMostClients); ++i) {
    table.add({report.results.hosts[clients[i].host],
               shownCount(static_cast<std::int64_t>(clients[i].tests.size())),
               fmt::format("{:.2f}", clients[i].least), fmt::format("{:.2f}", clients[i].most),
               testsText(report, clients[i])});
  }
  return "<section id=\"stragglers\">\n<h2>Clients far from the others</h2>\n<p "
         "class=\"legend\">Their "
         "median is more than 10 % and more than three scaled median absolute deviations (1.4826 x "
         "MAD) off "
         "the median of all clients' medians in the same test.</p>\n" +
         table.html() + "</section>\n";
}

}  // namespace marrowbench::ctl
