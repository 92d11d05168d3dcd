#include <fmt/ranges.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/check/same_file.h"
#include "marrowctl/check/written_files.h"
#include "marrowctl/plan/files_here.h"
#include "marrowctl/plan/one_spelling.h"

namespace marrowbench::ctl {
namespace {

// Two texts of which the marks get the same values: false where the first or the last characters in
// which they differ are none of these.
bool mayBeAlike(std::string_view a, std::string_view b) {
  const auto [front, otherFront] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  if (front == a.end() || otherFront == b.end()) return true;
  const auto [back, otherBack] = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
  if (back == a.rend() || otherBack == b.rend()) return true;
  return (isMark(*front) || isMark(*otherFront)) && (isMark(*back) || isMark(*otherBack));
}

class DataGroup {
 public:
  DataGroup(const Survey& theSurvey, FindingList& theFindings)
      : survey(theSurvey), findings(theFindings), written(theSurvey) {}

  void add(const SurveyedTest& test) {
    if (test.reads() && !test.source().isEmpty()) addSource(test);
    if (!test.writes() || test.dest().isEmpty()) return;
    if (test.test().type == TestType::copy) addSelfCopy(test);
    const bool isExclusive = test.test().method == Method::ansiC;
    std::vector<std::string> reasons;
    if (isExclusive) reasons = reasonsToExist(test);
    const auto sharedHost = written.add(test);
    if (sharedHost) addShared(test, *sharedHost);
    if (isExclusive && sharedHost) reasons.insert(reasons.begin(), "several clients write it");
    if (!reasons.empty()) addExisting(test, reasons);
  }

 private:
  void addSource(const SurveyedTest& test) {
    bool isOwn = false;
    for (std::size_t host = 0; host < survey.hostsToAsk(test.source()); ++host) {
      const auto sought = written.seek(test.source(), host, test.test().iterations);
      for (const std::int32_t iteration : iterationsToAsk(test, test.source())) {
        const auto writer = written.writerOf(sought, iteration);
        // The date is that of the moment: a name with it is never found again.
        const bool isWritten = writer && !test.source().has(kDateMark);
        if (!isWritten && isMissing(test, host, iteration)) return;
        const bool isByHost =
            !test.source().has(kHostMark) ||
            (writer && (writer->host == host || writer->host == Writer::kEveryHost));
        if (isWritten && isByHost) isOwn = true;
      }
    }
    if (isOwn) addOwn(test);
  }

  bool isMissing(const SurveyedTest& test, std::size_t host, std::int32_t iteration) {
    const std::string path = survey.path(test, test.source(), host, iteration);
    if (here.exists(path)) return false;
    const bool hasDate = test.source().has(kDateMark);
    findings.onField(
        "source-missing", test, Field::source,
        {hasDate
             ? std::string("[date] is the time of the reading, so no earlier line has "
                           "written the source, and it does not exist here")
             : fmt::format("no earlier line writes {}, and it does not exist here", quoted(path)),
         hasDate ? "name the file without [date] where it is written and where it is read"
                 : "put a line before this one that writes it, with as many iterations, or "
                   "make the file beforehand"});
    return true;
  }

  void addOwn(const SurveyedTest& test) {
    findings.onField("reads-own-write", test, Field::source,
                     {"the client reads what it has written before: its own memory serves it, and "
                      "neither network nor server are measured",
                      "read what another client has written, or more than the memory holds"});
  }

  void addSelfCopy(const SurveyedTest& test) {
    const PathPattern& from = test.source();
    const PathPattern& to = test.dest();
    if (from.name == to.name) return addSelfCopy(test, 0, false);
    const bool isPerHost = from.has(kHostMark) || to.has(kHostMark);
    const auto iterations = mayBeAlike(from.name, to.name)
                                ? iterationsToAsk(test, to.has(kIterationMark) ? to : from)
                                : std::vector<std::int32_t>{0};
    for (std::size_t host = 0; host < (isPerHost ? survey.plan.hosts.size() : 1); ++host) {
      for (const std::int32_t i : iterations) {
        const std::string source = survey.path(test, from, host, i);
        const std::string dest = survey.path(test, to, host, i);
        if (oneSpelling(source) == oneSpelling(dest)) return addSelfCopy(test, host, false);
        if (i == 0 && sameFile.isSame(source, dest)) return addSelfCopy(test, host, true);
      }
    }
  }

  void addSelfCopy(const SurveyedTest& test, std::size_t host, bool isThroughLinks) {
    const std::string path = survey.path(test, test.dest(), host, 0);
    const bool isStream = test.test().method == Method::stream;
    findings.onField("copies-onto-itself", test, Field::dest,
                     {fmt::format("source and dest are the same file{}, {}: {}",
                                  isThroughLinks ? " here, through links" : "", quoted(path),
                                  isStream ? "Stream empties it before it reads"
                                           : "nothing is measured that a copy does"),
                      "write another dest"});
  }

  std::vector<std::string> reasonsToExist(const SurveyedTest& test) {
    std::vector<std::string> reasons;
    if (test.test().iterations > 1 && !test.dest().has(kIterationMark)) {
      reasons.emplace_back(test.dest().has(kDateMark)
                               ? "every iteration writes it, and [date] changes every 10 s only"
                               : "every iteration writes it");
    }
    for (std::size_t host = 0; host < survey.hostsToAsk(test.dest()); ++host) {
      const auto sought = written.seek(test.dest(), host, test.test().iterations);
      for (const std::int32_t iteration : iterationsToAsk(test, test.dest())) {
        const std::string reason = reasonToExist(test, sought, host, iteration);
        if (reason.empty()) continue;
        reasons.push_back(reason);
        return reasons;
      }
    }
    return reasons;
  }

  std::string reasonToExist(const SurveyedTest& test, const WrittenFiles::Sought& sought,
                            std::size_t host, std::int32_t iteration) {
    if (const auto writer = written.writerOf(sought, iteration)) {
      return fmt::format("line {}{} writes it before", writer->test->line->number,
                         writer->test->file == test.file
                             ? ""
                             : fmt::format(" of {}", quoted(writer->test->file->path)));
    }
    const bool isFirstOrLast = iteration == 0 || iteration == test.test().lastIteration();
    const bool isHere =
        isFirstOrLast && here.exists(survey.path(test, test.dest(), host, iteration));
    return isHere ? "it exists here" : "";
  }

  void addExisting(const SurveyedTest& test, const std::vector<std::string>& reasons) {
    const std::string path = survey.path(test, test.dest(), 0, 0);
    findings.onField(
        "exists-already", test, Field::dest,
        {fmt::format("AnsiC writes no file that exists, {}: {}", quoted(path),
                     fmt::join(reasons, "; ")),
         "put [iter] for iterations, [cfgline] for lines, [host] for clients and [date] for "
         "earlier runs into the name"});
  }

  void addShared(const SurveyedTest& test, std::size_t host) {
    const bool isNamed = test.dest().has(kHostMark);
    const std::string path = survey.path(test, test.dest(), host, 0);
    findings.onField(
        "shared-destination", test, Field::dest,
        {isNamed ? fmt::format("{} is written by several clients, with other lines counted",
                               quoted(path))
                 : fmt::format("all clients write {}: they wait for each other or overwrite "
                               "each other's data",
                               quoted(path)),
         "put [host] into the name of the file"});
  }

  const Survey& survey;
  FindingList& findings;
  WrittenFiles written;
  FilesHere here;
  SameFile sameFile;
};

}  // namespace

void addDataFindings(const Survey& survey, FindingList& findings) {
  DataGroup group(survey, findings);
  for (const SurveyedTest& test : survey.tests) group.add(test);
}

}  // namespace marrowbench::ctl
