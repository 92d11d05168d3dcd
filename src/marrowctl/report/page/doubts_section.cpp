#include <fmt/format.h>

#include <algorithm>

#include "marrowctl/report/output.h"
#include "marrowctl/report/page/html_table.h"
#include "marrowctl/report/page/page_sections.h"
#include "marrowctl/support/html_text.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostShown = 3;
constexpr std::size_t kMostHosts = 20;
constexpr std::size_t kMostRows = 200;

std::string hostsText(const std::vector<std::string>& hosts) {
  std::string text;
  for (std::size_t i = 0; i < std::min(hosts.size(), kMostHosts); ++i) {
    text += (i == 0 ? "" : ", ") + hosts[i];
  }
  if (hosts.size() > kMostHosts) text += fmt::format(" and {} more", hosts.size() - kMostHosts);
  return text;
}

using Suspicions = std::vector<const Suspicion*>;

// Those with the same name and remedy stand together.
std::vector<Suspicions> groupsOf(const Report& report) {
  std::vector<Suspicions> groups;
  for (const Suspicion& each : report.suspicions) {
    const auto alike = std::find_if(groups.begin(), groups.end(), [&each](const Suspicions& group) {
      return group.front()->name == each.name && group.front()->remedy == each.remedy;
    });
    if (alike == groups.end()) {
      groups.push_back({&each});
    } else {
      alike->push_back(&each);
    }
  }
  return groups;
}

std::string itemHtml(const Report& report, const Suspicion& suspicion) {
  const std::string test =
      suspicion.test == kNone ? "" : htmlText(report.results.tests[suspicion.test].name) + ": ";
  return "<li>" + test + htmlText(suspicion.message) + "</li>\n";
}

std::string groupHtml(const Report& report, const Suspicions& group) {
  std::string first, others;
  for (std::size_t i = 0; i < group.size(); ++i) {
    (i < kMostShown ? first : others) += itemHtml(report, *group[i]);
  }
  if (!others.empty()) {
    others = fmt::format("<details><summary>{} more</summary><ul>\n{}</ul></details>\n",
                         group.size() - kMostShown, others);
  }
  return fmt::format("<li><b>{}</b>: {}\n<ul>{}</ul>{}</li>\n", htmlText(group.front()->name),
                     htmlText(group.front()->remedy), first, others);
}

std::string errorTextsHtml(const Report& report) {
  if (report.errors.empty()) return "";
  HtmlTable table({{"Error", {}, true}, {"Rows"}, {"Clients", {}, true}, {"First"}, {"Last"}});
  for (const ErrorGroup& group : report.errors) {
    table.add({group.text, shownCount(group.rows), hostsText(group.hosts), isoTime(group.first),
               isoTime(group.last)});
  }
  return table.html();
}

std::string unusableHtml(const Report& report) {
  const std::vector<UnusableRow>& rows = report.results.unusable;
  if (rows.empty()) return "";
  HtmlTable table({{"File", {}, true}, {"Line"}, {"Why", {}, true}});
  for (std::size_t i = 0; i < std::min(rows.size(), kMostRows); ++i) {
    table.add(
        {report.results.files[rows[i].file].path, std::to_string(rows[i].line), rows[i].reason});
  }
  const std::string note =
      rows.size() > kMostRows
          ? fmt::format("<p class=\"note\">The first {} of {} are listed.</p>\n", kMostRows,
                        shownCount(static_cast<std::int64_t>(rows.size())))
          : "";
  return "<h3>Rows that can't be used</h3>\n" + table.html() + note;
}

}  // namespace

std::string doubtsHtml(const Report& report) {
  std::string items;
  for (const Suspicions& group : groupsOf(report)) items += groupHtml(report, group);
  for (const std::string& note : report.results.notes) items += "<li>" + htmlText(note) + "</li>\n";
  if (items.empty()) return "";
  return "<section id=\"doubts\">\n<h2>Before you trust the figures</h2>\n<ul "
         "class=\"findings\">\n" +
         items + "</ul>\n</section>\n";
}

std::string errorsHtml(const Report& report) {
  return errorTextsHtml(report) + unusableHtml(report);
}

}  // namespace marrowbench::ctl
