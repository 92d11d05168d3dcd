#include "marrowctl/check/survey.h"

#include <algorithm>

#include "marrowctl/plan/expansion.h"
#include "paths/host_name.h"
#include "support/clock.h"
#include "support/fixed_string.h"
#include "support/time_stamps.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kMarks = "\x01\x02\x03";

// In any case, as the program does it.
std::string marked(const std::string& pathTemplate) {
  FixedString text = std::string_view(pathTemplate);
  text.replaceAll("[host]", std::string_view(&PathPattern::kHost, 1));
  text.replaceAll("[iter]", std::string_view(&PathPattern::kIteration, 1));
  text.replaceAll("[date]", std::string_view(&PathPattern::kDate, 1));
  return std::string(text.view());
}

bool hasMarks(const std::string& text) { return text.find_first_of(kMarks) != std::string::npos; }

PathPattern patternOf(std::string expanded, bool isExact) {
  const bool fits = expanded.size() < FixedString::capacity();
  return {std::move(expanded), isExact && fits};
}

SurveyedTest surveyed(const PlannedFile& file, const PlannedLine& line) {
  PlannedTest test = line.test;
  test.patterns = {};  // of the templates without marks
  bool isExact = !hasMarks(file.path);
  for (std::string* const path : {&test.source, &test.dest, &test.log, &test.table}) {
    isExact = isExact && !hasMarks(*path);
    *path = marked(*path);
  }
  ExpandedPaths paths = expandPaths(file, test, "-", 0);
  const auto pattern = [isExact](std::string& path) { return patternOf(std::move(path), isExact); };
  return {&file,
          &line,
          pattern(paths.source),
          pattern(paths.dest),
          pattern(paths.log),
          pattern(paths.table)};
}

bool isPlain(const std::string& host) {
  return host.find_first_of("./\\[]<>") == std::string::npos && !hasMarks(host);
}

std::string ExpandedPaths::*memberOf(const SurveyedTest& test, const PathPattern& pattern) {
  if (&pattern == &test.source) return &ExpandedPaths::source;
  if (&pattern == &test.dest) return &ExpandedPaths::dest;
  return &pattern == &test.log ? &ExpandedPaths::log : &ExpandedPaths::table;
}

}  // namespace

std::string replacedMark(std::string_view text, char mark, std::string_view by) {
  std::string result;
  for (std::size_t i = 0; (i = text.find(mark)) != std::string_view::npos;) {
    result.append(text.substr(0, i)).append(by);
    text.remove_prefix(i + 1);
  }
  return result.append(text);
}

Survey::Survey(const Plan& thePlan) : plan(thePlan) {
  for (const std::string& host : plan.hosts) {
    hosts.emplace_back(hostNameFrom(host).view());
    isPlainHost.push_back(isPlain(hosts.back()));
  }
  date = std::string(fileStamp(currentSeconds()).view());
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (line.kind == LineKind::test && line.test.isRun) tests.push_back(surveyed(file, line));
    }
  }
}

std::string Survey::forHost(const PathPattern& pattern, std::size_t host) const {
  return replacedMark(pattern.text, PathPattern::kHost, hosts[host]);
}

std::string Survey::path(const SurveyedTest& test, const PathPattern& pattern, std::size_t host,
                         std::int32_t iteration) const {
  if (!hasMarks(pattern.text) && pattern.isExact) return pattern.text;
  if (isPlainHost[host] && pattern.isExact) {
    std::string path = forHost(pattern, host);
    path = replacedMark(path, PathPattern::kIteration, std::to_string(iteration));
    path = replacedMark(path, PathPattern::kDate, date);
    if (path.size() <= FixedString::capacity()) return path;
  }
  // What passes the 500 characters, and names that change how a path is folded.
  return expandPaths(*test.file, test.test(), plan.hosts[host], iteration).*memberOf(test, pattern);
}

}  // namespace marrowbench::ctl
