#include "marrowctl/report/page/compare_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "marrowctl/report/page/html_table.h"
#include "marrowctl/report/page/page_document.h"
#include "marrowctl/report/page/page_sections.h"
#include "marrowctl/report/page/shown_files.h"
#include "marrowctl/report/text_parts.h"
#include "marrowctl/support/html_text.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

constexpr double kPercent = 100;

// The sentence of the text, and the test that lost most.
std::string verdictOf(const Comparison& comparison) {
  const auto worst =
      std::find_if(comparison.tests.begin(), comparison.tests.end(),
                   [](const ComparedTest& test) { return test.difference == Difference::slower; });
  if (worst == comparison.tests.end()) return summaryOf(comparison);
  return fmt::format("{} The worst lost {:.1f} %: {}.", summaryOf(comparison),
                     (1 - *worst->ratio) * kPercent, worst->name);
}

std::string tileHtml(const Comparison& comparison, Difference difference, std::string_view kind,
                     std::string_view meaning) {
  const std::int64_t count = countOf(comparison, difference);
  std::string name(nameOf(difference));
  name.front() = static_cast<char>(name.front() - 'a' + 'A');
  return fmt::format("<li class=\"{}\"><b>{}: {}</b><span>{}</span></li>\n",
                     count > 0 ? kind : "open", name, shownCount(count), htmlText(meaning));
}

std::string runHtml(std::string_view which, const ResultSet& set) {
  std::string text = fmt::format("{}: {}, {} of {}", which, shownFiles(set.files),
                                 shownCount(static_cast<std::int64_t>(set.judgedRows), "row"),
                                 shownCount(static_cast<std::int64_t>(set.hosts.size()), "client"));
  if (!set.unusable.empty()) {
    text += ", and " + shownCount(static_cast<std::int64_t>(set.unusable.size()), "row") +
            " that can't be used";
  }
  return "<p class=\"soft\">" + htmlText(text) + ".</p>\n";
}

std::string headerHtml(const ComparedRuns& runs) {
  return fmt::format(
      "<header>\n<h1>Marrowbench comparison</h1>\n<p class=\"verdict\">{}</p>\n<ul "
      "class=\"answers\">\n{}{}{}{}</ul>\n{}{}</header>\n",
      htmlText(verdictOf(runs.comparison)),
      tileHtml(runs.comparison, Difference::slower, "no", "The whole interval is below 1."),
      tileHtml(runs.comparison, Difference::faster, "yes", "The whole interval is above 1."),
      tileHtml(runs.comparison, Difference::same, "yes",
               "The whole interval lies within 0.98 to 1.02."),
      tileHtml(runs.comparison, Difference::cannotTell, "open",
               "The interval is wider and holds 1, or a run has fewer than 5 rows."),
      runHtml("Old", runs.before), runHtml("New", runs.after));
}

std::string notesHtml(const ComparedRuns& runs) {
  std::string items;
  for (const auto& [which, set] : {std::pair("Old", &runs.before), {"New", &runs.after}}) {
    for (const std::string& note : set->notes)
      items += fmt::format("<li>{}: {}</li>\n", which, htmlText(note));
  }
  if (items.empty()) return "";
  return "<section id=\"doubts\">\n<h2>Before you trust the figures</h2>\n<ul "
         "class=\"findings\">\n" +
         items + "</ul>\n</section>\n";
}

std::string speedOf(const ComparedSide& side) {
  return side.medianMibPerSecond ? shownSpeed(*side.medianMibPerSecond) : "";
}

std::string testsHtml(const Comparison& comparison) {
  constexpr std::string_view kUnit = "MiB/s";
  HtmlTable table({{"Test", {}, true},
                   {"Verdict", {}, true},
                   {"Old", kUnit},
                   {"New", kUnit},
                   {"New / old"},
                   {"95 % interval"},
                   {"Rows", "old"},
                   {"Rows", "new"},
                   {"Clients", "old"},
                   {"Clients", "new"}});
  for (const ComparedTest& test : comparison.tests) {
    table.add({test.name, std::string(nameOf(test.difference)), speedOf(test.before),
               speedOf(test.after), test.ratio ? fmt::format("{:.3f}", *test.ratio) : "",
               test.low ? fmt::format("{:.3f} to {:.3f}", *test.low, *test.high) : "",
               shownCount(test.before.rows), shownCount(test.after.rows),
               shownCount(test.before.clients), shownCount(test.after.clients)});
  }
  return "<section id=\"tests\">\n<h2>Tests</h2>\n<p class=\"legend\">Worst first. Old and New are "
         "medians over the rows that moved something, of all clients. 1 MiB is 1,048,576 "
         "bytes.</p>\n" +
         table.html() + "</section>\n";
}

std::string othersHtml(std::string_view title, const std::vector<std::string>& names) {
  if (names.empty()) return "";
  std::string items;
  for (const std::string& name : names) items += "<li>" + htmlText(name) + "</li>\n";
  return fmt::format("<section>\n<h2>{}</h2>\n<ul class=\"findings\">\n{}</ul>\n</section>\n",
                     htmlText(title), items);
}

}  // namespace

std::string comparePageOf(const ComparedRuns& runs, std::string_view program) {
  const Comparison& comparison = runs.comparison;
  const std::vector<ChartSection> sections = {ratioSection(comparison), mediansSection(comparison)};
  const std::string body =
      headerHtml(runs) + "<nav>\n" + linksHtml(sections) + linkHtml("tests", "Tests") + "</nav>\n" +
      notesHtml(runs) + chartsHtml(sections) + testsHtml(comparison) +
      othersHtml("Only in the old tables", comparison.onlyOld) +
      othersHtml("Only in the new tables", comparison.onlyNew) + absencesHtml(sections);
  return documentOf({"Marrowbench comparison: " + verdictOf(comparison), body, sections}, program);
}

}  // namespace marrowbench::ctl
