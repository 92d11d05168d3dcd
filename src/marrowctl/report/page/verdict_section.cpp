#include <fmt/format.h>

#include <algorithm>

#include "marrowctl/report/page/local_time.h"
#include "marrowctl/report/page/page_sections.h"
#include "marrowctl/report/page/shown_files.h"
#include "marrowctl/support/html_text.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

struct Meanings {
  std::string_view yes, no, open;
};

constexpr Meanings kComplete = {"All clients and rows that there should be are there.",
                                "Clients, rows or markers are missing.",
                                "How many clients or rows there should be is not known."};
constexpr Meanings kConcurrent = {
    "In every test the clients ran together for at least half of its time.",
    "In some test the clients ran together for less than half of its time.",
    "There is one client only, or the tests are too short."};

std::string_view meaningOf(const Meanings& meanings, std::optional<bool> answer) {
  return !answer ? meanings.open : *answer ? meanings.yes : meanings.no;
}

std::string answerHtml(std::string_view question, std::optional<bool> answer,
                       std::string_view meaning) {
  const std::string_view kind = !answer ? "open" : *answer ? "yes" : "no";
  const std::string_view word = !answer ? "? cannot tell" : *answer ? "\u2713 yes" : "\u2717 no";
  return fmt::format("<li class=\"{}\"><b>{}: {}</b><span>{}</span></li>\n", kind,
                     htmlText(question), word, htmlText(meaning));
}

std::string spanText(const Report& report) {
  double first = 0;
  std::int64_t last = 0;
  for (const TestReport& test : report.tests) {
    if (test.rows == 0) continue;
    first = last == 0 ? test.firstStart : std::min(first, test.firstStart);
    last = std::max(last, test.lastEnd);
  }
  if (last == 0) return "";
  return fmt::format(", from {} to {} ({})", shownTime(first), shownTime(static_cast<double>(last)),
                     shownOffset(first));
}

std::string cleanText(const Report& report) {
  return fmt::format("{}, {} with null data, {} that can't be used.",
                     shownCount(report.rows.errors, "error row"),
                     shownCount(report.rows.nullData, "row"),
                     shownCount(static_cast<std::int64_t>(report.results.unusable.size()), "row"));
}

}  // namespace

std::string verdictHtml(const Report& report) {
  return fmt::format(
      "<header>\n<h1>Marrowbench report</h1>\n<p class=\"verdict\">{}</p>\n<ul "
      "class=\"answers\">\n{}{}{}"
      "</ul>\n<p class=\"soft\">{}{}.</p>\n</header>\n",
      htmlText(report.verdict.text),
      answerHtml("Complete", report.verdict.complete,
                 meaningOf(kComplete, report.verdict.complete)),
      answerHtml("Concurrent", report.verdict.concurrent,
                 meaningOf(kConcurrent, report.verdict.concurrent)),
      answerHtml("Clean", report.verdict.clean, cleanText(report)),
      htmlText("Read: " + shownFiles(report.results.files)), htmlText(spanText(report)));
}

}  // namespace marrowbench::ctl
