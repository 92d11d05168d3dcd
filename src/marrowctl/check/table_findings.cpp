#include <fmt/format.h>
#include <sys/stat.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "marrowctl/check/finding_groups.h"
#include "marrowctl/support/units.h"

namespace marrowbench::ctl {
namespace {

// In step, a lock lets 41 rows through in the ten seconds for which the others wait.
constexpr std::int64_t kMostInStep = 40;

std::string_view specialKindOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return {};
  if (S_ISDIR(status.st_mode)) return "a folder";
  if (S_ISFIFO(status.st_mode)) return "a pipe";
  return S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode) ? "a device" : "a socket";
}

class TableGroup {
 public:
  TableGroup(const Survey& theSurvey, FindingList& theFindings)
      : survey(theSurvey), findings(theFindings) {}

  void add(const SurveyedTest& test) {
    if (test.text(Field::log).empty()) {
      addNoLog(test);
    } else {
      addSpecial(test, Field::log, test.log());
    }
    if (!test.hasTable()) return addNoTable(test);
    addSpecial(test, Field::table, test.table());
    if (!test.isRepeated()) return;
    addAnonymous(test);
    addCrowd(test);
  }

 private:
  void addNoTable(const SurveyedTest& test) {
    findings.onField("no-table", test, Field::table,
                     {"the results field is blank: no row is kept",
                      "write the path of a table, "
                      "results.csv say"});
  }

  void addNoLog(const SurveyedTest& test) {
    findings.onField("no-log", test, Field::log,
                     {"the log field is blank: no log is kept",
                      "write the path of a log, "
                      "[host].log say, if what the clients print is to be kept"});
  }

  void addAnonymous(const SurveyedTest& test) {
    const bool isNamed =
        test.source().has(kHostMark) || test.dest().has(kHostMark) || test.table().has(kHostMark);
    if (isNamed || !survey.plan.isForManyClients()) return;
    findings.onField(
        "anonymous-rows", test, Field::table,
        {"nothing in a row tells which client it is of: neither source, dest nor the table's "
         "path holds [host]",
         "put [host] into one of them, into the name of the file that is written say"});
  }

  void addCrowd(const SurveyedTest& test) {
    if (test.table().has(kHostMark) || survey.plan.clients <= kMostInStep) return;
    if (!crowded.insert(test.file->path + '\n' + test.table().text).second) return;
    findings.onField(
        "crowded-lock", test, Field::table,
        {fmt::format("{} share this table: when more than {} finish in step, rows are lost "
                     "while they wait for its lock",
                     shownCount(survey.plan.clients, "client"), kMostInStep),
         "put [host] into the table's path: each client then has its own, and one command "
         "joins them"});
  }

  void addSpecial(const SurveyedTest& test, Field field, const PathPattern& pattern) {
    const auto [place, isNew] = kinds.try_emplace(pattern.text);
    for (std::size_t host = 0; isNew && host < survey.hostsToAsk(pattern); ++host) {
      place->second = specialKindOf(survey.path(test, pattern, host, 0));
      if (!place->second.empty()) break;
    }
    if (place->second.empty()) return;
    findings.onField("table-is-special", test, field,
                     {fmt::format("the {} is {} here: what is written there is not kept in a file",
                                  field == Field::log ? "log" : "table", place->second),
                      "write the path of a file"});
  }

  const Survey& survey;
  FindingList& findings;
  std::unordered_set<std::string> crowded;                  // files and tables told of
  std::unordered_map<std::string, std::string_view> kinds;  // by pattern; empty: files or nothing
};

}  // namespace

void addTableFindings(const Survey& survey, FindingList& findings) {
  TableGroup group(survey, findings);
  for (const SurveyedTest& test : survey.tests) group.add(test);
}

}  // namespace marrowbench::ctl
