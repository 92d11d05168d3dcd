#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "marrowctl/report/page/html_table.h"
#include "marrowctl/report/page/page_sections.h"
#include "marrowctl/report/text_parts.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kUnit = "MiB/s";

// Links are sold in MB.
constexpr double kMegabytesOfMebibyte = 1.048576;

std::string shownPercent(double share) { return fmt::format("{:.1f} %", share * 100.0); }

std::string overlapText(const TestReport& test) {
  if (!test.overlap) return "";
  return test.isTooShort ? "too short" : shownPercent(*test.overlap);
}

// Dates have whole seconds: of a test that is too short they make any speed.
std::string rateText(const TestReport& test, const std::optional<Rate>& rate, double unit = 1) {
  return rate && !test.isTooShort ? shownSpeed(rate->mibPerSecond * unit) : "";
}

// Those that count in what all got together, of how many.
std::string clientsText(const TestReport& test) {
  const auto all = static_cast<std::int64_t>(test.clients.size());
  const auto left = std::count_if(test.clients.begin(), test.clients.end(),
                                  [](const ClientReport& client) { return client.isLeftOut; });
  return left == 0 ? shownCount(all) : shownCount(all - left) + " of " + shownCount(all);
}

std::string countText(std::int64_t count) { return count == 0 ? "" : shownCount(count); }

void addTest(HtmlTable& table, const std::string& name, const TestReport& test) {
  if (!test.mibPerSecond) {
    table.add({name, clientsText(test), shownCount(test.rows), countText(test.errors),
               countText(test.nullData), "", "", "", "", "", "", "", "", "", ""});
    return;
  }
  const Spread& speed = *test.mibPerSecond;
  table.add({name, clientsText(test), shownCount(test.rows), countText(test.errors),
             countText(test.nullData), shownSpeed(speed.min), shownSpeed(speed.p25),
             shownSpeed(speed.median), shownSpeed(speed.p75), shownSpeed(speed.max),
             speed.cv ? shownPercent(*speed.cv) : "", rateText(test, test.allActive),
             rateText(test, test.allActive, kMegabytesOfMebibyte), rateText(test, test.toTheLast),
             overlapText(test)});
}

}  // namespace

std::string testsHtml(const Report& report) {
  HtmlTable table({{"Test", {}, true},
                   {"Clients"},
                   {"Rows"},
                   {"Errors"},
                   {"Null data"},
                   {"Min", kUnit},
                   {"25 %", kUnit},
                   {"Median", kUnit},
                   {"75 %", kUnit},
                   {"Max", kUnit},
                   {"CV"},
                   {"All active", kUnit},
                   {"All active", "MB/s"},
                   {"To the last", kUnit},
                   {"Overlap"}});
  for (std::size_t i = 0; i < report.tests.size(); ++i) {
    addTest(table, report.results.tests[i].name, report.tests[i]);
  }
  return "<section id=\"tests\">\n<h2>Tests</h2>\n"
         "<p class=\"legend\">Min to CV are over the rows of all clients, each with the speed of "
         "one transfer. <b>All active</b> is what the clients moved together while every one of "
         "them was at work: from the latest first start to the earliest last end, each row's "
         "bytes in proportion to its part in it. Clients that have failed rows only, or lack more "
         "than a tenth of theirs, do not count there: \"11 of 12\". <b>To the last</b> is all "
         "bytes over the time from the first start to the last end. <b>Overlap</b> is the first of "
         "these times as a share of the second; below 50 % the clients did not run at the same "
         "time. Speeds that did not overlap are never added. CV is the standard deviation over the "
         "mean. 1 MiB is 1,048,576 bytes, 1 MB 1,000,000.</p>\n" +
         table.html() + "</section>\n";
}

}  // namespace marrowbench::ctl
