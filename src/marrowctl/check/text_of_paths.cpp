#include <fmt/format.h>

#include <string>
#include <vector>

#include "marrowctl/check/text_parts.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

// More clients than these are counted only; --json names the paths of all.
constexpr std::size_t kShownHosts = 3;

std::string shownPath(const std::string& path) { return path.empty() ? "MEMORY" : printable(path); }

class PathLines {
 public:
  PathLines(const Survey& theSurvey, const TextStyle& theStyle)
      : survey(theSurvey), style(theStyle) {}

  void add(const SurveyedTest& test) {
    if (!test.isRepeated()) return;
    const std::int32_t last = test.test().lastIteration();
    for (std::size_t host = 0; host < std::min(survey.plan.hosts.size(), kShownHosts); ++host) {
      addMove(test, host, 0);
      if (last > 0) addMove(test, host, last);
    }
    addReports(test);
  }

  std::string text;

 private:
  // The same files again are said once.
  void addMove(const SurveyedTest& test, std::size_t host, std::int32_t iteration) {
    const std::string move = shownPath(survey.path(test, test.source(), host, iteration)) + " -> " +
                             shownPath(survey.path(test, test.dest(), host, iteration));
    const bool isFirst = host == 0 && iteration == 0;
    if (!isFirst && move == previousMove) return;
    previousMove = move;
    const std::string number = isFirst ? std::to_string(test.line->number) : "";
    text += fmt::format("  {:>4}  {}  {}\n", number, place(host, iteration), move);
  }

  [[nodiscard]] std::string place(std::size_t host, std::int32_t iteration) const {
    const std::string name =
        survey.plan.hosts.size() > 1 ? printable(survey.plan.hosts[host]) + " " : std::string();
    return toned(fmt::format("{}[iter] {}", name, iteration), Tone::faint, style);
  }

  // Most lines of a file share their log and table.
  void addReports(const SurveyedTest& test) {
    const bool hasLog = !test.text(Field::log).empty();
    const std::string log = hasLog ? printable(survey.path(test, test.log(), 0, 0)) : "none";
    const std::string table =
        test.hasTable() ? printable(survey.path(test, test.table(), 0, 0)) : "none";
    const std::string reports = fmt::format("        log    {}\n        table  {}\n", log, table);
    if (reports != previousReports) text += reports;
    previousReports = reports;
  }

  const Survey& survey;
  const TextStyle& style;
  std::string previousMove;
  std::string previousReports;
};

}  // namespace

std::string pathsText(const Survey& survey, const PlannedFile& file, const TextStyle& style) {
  PathLines lines(survey, style);
  for (const SurveyedTest& test : survey.tests) {
    if (test.file == &file) lines.add(test);
  }
  if (lines.text.empty()) return {};
  if (survey.plan.hosts.size() > kShownHosts) {
    const auto more = static_cast<std::int64_t>(survey.plan.hosts.size() - kShownHosts);
    lines.text += fmt::format("        and so on for {}\n", shownCount(more, "more client"));
  }
  return "\n  first and last iteration\n" + lines.text;
}

}  // namespace marrowbench::ctl
